# What `cmake --install` puts where. Nothing in an installed tree names the place it was installed to, so a tree may be
# moved as a whole. The components are the packages that a distribution makes of it: the libraries Core and Conf, the
# media library, the tool, and what compiling against all of them needs.

include(CMakePackageConfigHelpers)

set(runtime "libzelnor${PROJECT_VERSION_MAJOR}")
set(media_runtime "libzelnor-media${PROJECT_VERSION_MAJOR}")
set(development libzelnor-dev)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Zelnor")
set(headers_dir "${CMAKE_INSTALL_INCLUDEDIR}/zelnor")

# zelnor_install_libraries(<export> <component> <library>...)
function(zelnor_install_libraries export component)
  install(
    TARGETS ${ARGN}
    EXPORT ${export}
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${development}
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${component} NAMELINK_COMPONENT ${development}
    FILE_SET HEADERS DESTINATION "${headers_dir}" COMPONENT ${development}
    FILE_SET generated DESTINATION "${headers_dir}" COMPONENT ${development}
    INCLUDES DESTINATION "${headers_dir}")
  zelnor_install_export(${export})
endfunction()

function(zelnor_install_export export)
  install(
    EXPORT ${export}
    NAMESPACE Zelnor::
    DESTINATION "${package_dir}"
    COMPONENT ${development})
endfunction()

zelnor_install_libraries(ZelnorTargets ${runtime} ZelnorCore ZelnorConf)
if(TARGET ZelnorMedia)
  zelnor_install_libraries(ZelnorMediaTargets ${media_runtime} ZelnorMedia)
  if(TARGET ZelnorFFmpeg)
    # Loaded by the media library; nobody links it.
    install(TARGETS ZelnorFFmpeg LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT ${media_runtime} NAMELINK_SKIP)
  endif()
  install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/Presets"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zelnor"
    COMPONENT ${media_runtime}
    FILES_MATCHING
    PATTERN "*.json")
  install(
    FILES "${PROJECT_SOURCE_DIR}/Schemas/job.schema.json" "${PROJECT_SOURCE_DIR}/Schemas/preset.schema.json"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zelnor/schemas"
    COMPONENT ${media_runtime})
endif()
if(TARGET zconf)
  install(TARGETS zconf EXPORT ZelnorToolsTargets RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT zconf)
  zelnor_install_export(ZelnorToolsTargets)
  install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/Docs/man/"
    DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
    COMPONENT zconf
    FILES_MATCHING
    PATTERN "*.1"
    PATTERN parts EXCLUDE)
  # Where each shell looks for what a package brings along; bash and fish find a command's script by its name.
  set(completion "${PROJECT_SOURCE_DIR}/Tools/zconf/Completion")
  install(
    FILES "${completion}/zconf.bash"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
    COMPONENT zconf
    RENAME zconf)
  install(FILES "${completion}/_zconf" DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT zconf)
  install(FILES "${completion}/zconf.fish" DESTINATION "${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d" COMPONENT zconf)
endif()

# Documents

foreach(file IN ITEMS README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md LICENSE)
  install(FILES "${PROJECT_SOURCE_DIR}/${file}" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT ${development})
endforeach()
# File by file, since a folder would be installed with the folders in it that have no documents.
file(GLOB documents CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/Docs/*.md" "${PROJECT_SOURCE_DIR}/Docs/*.svg")
install(FILES ${documents} DESTINATION "${CMAKE_INSTALL_DOCDIR}/Docs" COMPONENT ${development})

# CMake package

set(zelnor_media_file "libZelnorMedia.so.${PROJECT_VERSION}")
set(zelnor_static_dependencies "")
if(zelnor_library_kind STREQUAL "STATIC")
  set(zelnor_media_file libZelnorMedia.a)
  # What archives are linked with; shared libraries bring it along.
  if(ZELNOR_LOG)
    string(APPEND zelnor_static_dependencies "find_dependency(glog)\n")
  endif()
  string(
    APPEND
    zelnor_static_dependencies
    "if(Zelnor_Media_FOUND)
  find_dependency(PkgConfig)
  pkg_check_modules(ZELNOR_LIBAV REQUIRED QUIET IMPORTED_TARGET libavformat libavcodec libavutil)
endif()\n")
endif()
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/ZelnorConfig.cmake.in" "${PROJECT_BINARY_DIR}/ZelnorConfig.cmake"
  INSTALL_DESTINATION "${package_dir}"
  PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_BINDIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZelnorConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/ZelnorConfig.cmake" "${PROJECT_BINARY_DIR}/ZelnorConfigVersion.cmake"
  DESTINATION "${package_dir}"
  COMPONENT ${development})

# pkg-config. A package is required where pkg-config knows it, and else named as the compiler needs it.

file(RELATIVE_PATH ZELNOR_PC_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" ZELNOR_PC_PREFIX "${ZELNOR_PC_PREFIX}")
file(RELATIVE_PATH ZELNOR_PC_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH ZELNOR_PC_INCLUDEDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")

find_package(PkgConfig QUIET)
# zelnor_pkg_config_knows(<package> <result>): its version, or nothing.
function(zelnor_pkg_config_knows package result)
  set(version "")
  if(PkgConfig_FOUND)
    pkg_get_variable(directory ${package} pcfiledir)
    if(directory)
      execute_process(
        COMMAND "${PKG_CONFIG_EXECUTABLE}" --modversion ${package}
        OUTPUT_VARIABLE version
        OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    endif()
  endif()
  set(${result} "${version}" PARENT_SCOPE)
endfunction()

# A shared library brings along what it needs. Whoever links our archives links what they need, too, as it is at hand;
# `pkg-config --static` is for those who have archives of that as well.
set(ZELNOR_PC_CONF_PUBLIC "")
set(ZELNOR_PC_CONF_PRIVATE "")
set(ZELNOR_PC_MEDIA_PUBLIC "zelnor-conf = ${PROJECT_VERSION}")
set(ZELNOR_PC_MEDIA_PRIVATE "libavformat, libavcodec, libavutil")
if(zelnor_library_kind STREQUAL "STATIC")
  string(APPEND ZELNOR_PC_MEDIA_PUBLIC ", ${ZELNOR_PC_MEDIA_PRIVATE}")
  set(ZELNOR_PC_MEDIA_PRIVATE "")
endif()
set(ZELNOR_PC_CONF_LIBS "")
set(ZELNOR_PC_CONF_CFLAGS "")
# The headers of the generation that ours belong to. Archives would be linked with FFmpeg if they required its package.
zelnor_pkg_config_knows(libavcodec version)
if(zelnor_library_kind STREQUAL "SHARED" AND ZELNOR_FFMPEG_MAJOR AND version MATCHES "^${ZELNOR_FFMPEG_MAJOR}[.]")
  math(EXPR next "${ZELNOR_FFMPEG_MAJOR} + 1")
  set(ZELNOR_PC_CONF_PRIVATE "libavcodec >= ${ZELNOR_FFMPEG_MAJOR}, libavcodec < ${next}")
elseif(NOT ZELNOR_AVCODEC_INCLUDE_DIR IN_LIST CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
  set(ZELNOR_PC_CONF_CFLAGS " -I${ZELNOR_AVCODEC_INCLUDE_DIR}")
endif()
if(zelnor_library_kind STREQUAL "STATIC" AND ZELNOR_LOG)
  zelnor_pkg_config_knows(libglog version)
  if(version)
    set(ZELNOR_PC_CONF_PUBLIC libglog)
  else()
    set(ZELNOR_PC_CONF_LIBS " -lglog")
  endif()
endif()

function(zelnor_pkg_config package)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in" "${PROJECT_BINARY_DIR}/${package}.pc" @ONLY)
  install(
    FILES "${PROJECT_BINARY_DIR}/${package}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT ${development})
endfunction()

zelnor_pkg_config(zelnor-conf)
if(TARGET ZelnorMedia)
  zelnor_pkg_config(zelnor-media)
endif()

# Removing what was installed

if(PROJECT_IS_TOP_LEVEL AND NOT TARGET uninstall)
  add_custom_target(
    uninstall
    COMMAND "${CMAKE_COMMAND}" "-DBUILD_DIR=${PROJECT_BINARY_DIR}" -P "${PROJECT_SOURCE_DIR}/cmake/ZelnorUninstall.cmake"
    VERBATIM)
endif()
