# What `cmake --install` puts where. Nothing in an installed tree names the place it was installed to, so a tree may be
# moved as a whole.

include(CMakePackageConfigHelpers)

set(libraries ZelnorCore ZelnorConf)
if(TARGET ZelnorMedia)
  list(APPEND libraries ZelnorMedia)
endif()
install(
  TARGETS ${libraries}
  EXPORT ZelnorTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")

foreach(root IN ITEMS "${PROJECT_SOURCE_DIR}" "${ZELNOR_GENERATED_DIR}")
  foreach(layer IN ITEMS Core Conf)
    if(EXISTS "${root}/${layer}/Interfaces")
      install(
        DIRECTORY "${root}/${layer}/Interfaces"
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/zelnor/${layer}"
        FILES_MATCHING
        PATTERN "*.h"
        PATTERN "*.def")
    endif()
  endforeach()
endforeach()

if(TARGET zconf)
  install(TARGETS zconf RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()
install(
  DIRECTORY "${PROJECT_SOURCE_DIR}/Presets"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/zelnor"
  OPTIONAL
  FILES_MATCHING
  PATTERN "*.json")

# CMake package

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/Zelnor")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZelnorConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/ZelnorConfig.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZelnorConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZelnorConfig.cmake" "${PROJECT_BINARY_DIR}/ZelnorConfigVersion.cmake"
        DESTINATION "${package_dir}")
install(
  EXPORT ZelnorTargets
  NAMESPACE Zelnor::
  DESTINATION "${package_dir}")

# pkg-config

file(RELATIVE_PATH ZELNOR_PC_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" ZELNOR_PC_PREFIX "${ZELNOR_PC_PREFIX}")
file(RELATIVE_PATH ZELNOR_PC_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH ZELNOR_PC_INCLUDEDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/zelnor-conf.pc.in" "${PROJECT_BINARY_DIR}/zelnor-conf.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zelnor-conf.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
