# What `cmake --install` puts where. Nothing in an installed tree names the place it was installed to, so a tree may be
# moved as a whole. The components Conf (with Core), Media and Tools can be installed one by one, each on top of those
# before it.

include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Zelnor")
set(headers_dir "${CMAKE_INSTALL_INCLUDEDIR}/zelnor")

install(
  TARGETS ZelnorCore ZelnorConf
  EXPORT ZelnorTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Conf
  FILE_SET HEADERS DESTINATION "${headers_dir}" COMPONENT Conf
  FILE_SET generated DESTINATION "${headers_dir}" COMPONENT Conf
  INCLUDES DESTINATION "${headers_dir}")
install(
  EXPORT ZelnorTargets
  NAMESPACE Zelnor::
  DESTINATION "${package_dir}"
  COMPONENT Conf)

if(TARGET ZelnorMedia)
  install(
    TARGETS ZelnorMedia
    EXPORT ZelnorMediaTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT Media
    FILE_SET HEADERS DESTINATION "${headers_dir}" COMPONENT Media
    INCLUDES DESTINATION "${headers_dir}")
  install(
    EXPORT ZelnorMediaTargets
    NAMESPACE Zelnor::
    DESTINATION "${package_dir}"
    COMPONENT Media)
  install(
    DIRECTORY "${PROJECT_SOURCE_DIR}/Presets"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/zelnor"
    COMPONENT Media
    FILES_MATCHING
    PATTERN "*.json")
endif()

if(TARGET zconf)
  install(TARGETS zconf EXPORT ZelnorToolsTargets RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT Tools)
  install(
    EXPORT ZelnorToolsTargets
    NAMESPACE Zelnor::
    DESTINATION "${package_dir}"
    COMPONENT Tools)
endif()

# CMake package

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZelnorConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/ZelnorConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZelnorConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/ZelnorConfig.cmake" "${PROJECT_BINARY_DIR}/ZelnorConfigVersion.cmake"
  DESTINATION "${package_dir}"
  COMPONENT Conf)

# pkg-config

file(RELATIVE_PATH ZELNOR_PC_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" ZELNOR_PC_PREFIX "${ZELNOR_PC_PREFIX}")
file(RELATIVE_PATH ZELNOR_PC_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH ZELNOR_PC_INCLUDEDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")

# zelnor_pkg_config(<package> <component>)
function(zelnor_pkg_config package component)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in" "${PROJECT_BINARY_DIR}/${package}.pc" @ONLY)
  install(
    FILES "${PROJECT_BINARY_DIR}/${package}.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT ${component})
endfunction()

zelnor_pkg_config(zelnor-conf Conf)
if(TARGET ZelnorMedia)
  zelnor_pkg_config(zelnor-media Media)
endif()
