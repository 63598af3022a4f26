# Debian packages, by `cpack -G DEB` in a build folder. Each install component is a package of its name.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zelnor)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "The Zelnor maintainers <maintainers@zelnor.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                                                WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Where what the packages need of each other is found.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
if(zelnor_is_multi_config)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "")
  foreach(type IN LISTS CMAKE_CONFIGURATION_TYPES)
    string(REPLACE "$<CONFIG>" "${type}" folder "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
    list(APPEND CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${folder}")
  endforeach()
endif()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/ZelnorPackageFiles.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/ZelnorPackageScripts.cmake")
set(CPACK_ZELNOR_SOURCE_DIR "${PROJECT_SOURCE_DIR}")
set(CPACK_ZELNOR_CONTROL_DIR "${PROJECT_BINARY_DIR}/packages")

# zelnor_package(<component> <section> <depends> <line of text>...)
macro(zelnor_package component section depends)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} zelnor_upper)
  set(CPACK_DEBIAN_${zelnor_upper}_PACKAGE_NAME ${component})
  set(CPACK_DEBIAN_${zelnor_upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${zelnor_upper}_PACKAGE_DEPENDS "${depends}")
  string(JOIN "\n" CPACK_COMPONENT_${zelnor_upper}_DESCRIPTION ${ARGN})
endmacro()

set(CPACK_COMPONENTS_ALL "")
set(same "(= ${PROJECT_VERSION}-1)")
zelnor_package(
  libzelnor${PROJECT_VERSION_MAJOR} libs "" "Names for media formats, codecs and presets, tables and calculators, and the"
  "graph of a transcoding job, which can be edited, checked, written, read and" "drawn.")
set(developed "libzelnor${PROJECT_VERSION_MAJOR} ${same}, libboost-dev (>= 1.74), rapidjson-dev, libavcodec-dev")
if(TARGET ZelnorMedia)
  zelnor_package(
    libzelnor-media${PROJECT_VERSION_MAJOR} libs "libzelnor${PROJECT_VERSION_MAJOR} ${same}, ffmpeg"
    "Looks into media files, reads presets, plans transcoding jobs, checks them,"
    "runs them with ffmpeg and verifies what was made.")
  string(PREPEND developed "libzelnor-media${PROJECT_VERSION_MAJOR} ${same}, ")
  string(APPEND developed ", libavformat-dev, libavutil-dev")
endif()
zelnor_package(
  libzelnor-dev libdevel "${developed}" "Headers, the CMake package Zelnor, the pkg-config packages zelnor-conf and"
  "zelnor-media, and documents.")
if(TARGET zconf)
  zelnor_package(
    zconf video "libzelnor-media${PROJECT_VERSION_MAJOR} ${same}" "A command line that converts media files with presets, and makes, checks,"
    "draws, runs and compares the jobs behind that.")
endif()
foreach(library IN ITEMS LIBZELNOR${PROJECT_VERSION_MAJOR} LIBZELNOR-MEDIA${PROJECT_VERSION_MAJOR})
  string(TOLOWER ${library} component)
  set(CPACK_DEBIAN_${library}_PACKAGE_CONTROL_EXTRA "${CPACK_ZELNOR_CONTROL_DIR}/${component}/triggers"
                                                    "${CPACK_ZELNOR_CONTROL_DIR}/${component}/symbols"
                                                    "${CPACK_ZELNOR_CONTROL_DIR}/${component}/shlibs")
endforeach()
include(CPack)
