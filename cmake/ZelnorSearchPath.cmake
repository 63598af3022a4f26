# Where the dynamic linker looks for our libraries. CMake ends the path of what will be installed with empty entries, room for
# the installed path, and an empty entry means the current folder: whoever runs a built program in a stranger's folder would
# run the stranger's libraries. So what is built is laid out as it will be installed, and has the installed path at once.

# An installed program finds our libraries relative to itself, and they each other, unless the packager decides otherwise.
if(DEFINED CMAKE_INSTALL_RPATH)
  set(zelnor_library_rpath "${CMAKE_INSTALL_RPATH}")
  set(zelnor_is_laid_out OFF)
else()
  file(RELATIVE_PATH zelnor_bin_to_lib "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set(CMAKE_INSTALL_RPATH "$ORIGIN/${zelnor_bin_to_lib}")
  set(zelnor_library_rpath "$ORIGIN")
  cmake_path(SET zelnor_library_folder NORMALIZE "${PROJECT_BINARY_DIR}/bin/${zelnor_bin_to_lib}")
  cmake_path(IS_PREFIX PROJECT_BINARY_DIR "${zelnor_library_folder}" zelnor_is_laid_out)
endif()
if(NOT zelnor_is_laid_out)
  set(zelnor_library_folder "${PROJECT_BINARY_DIR}/lib")
endif()
if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${zelnor_library_folder}")
  if(zelnor_is_multi_config)
    # One such layout for each build type. CMake would put a folder for each type into both.
    foreach(kind RUNTIME LIBRARY)
      string(REPLACE "${PROJECT_BINARY_DIR}/" "${PROJECT_BINARY_DIR}/$<CONFIG>/" CMAKE_${kind}_OUTPUT_DIRECTORY
                     "${CMAKE_${kind}_OUTPUT_DIRECTORY}")
    endforeach()
  endif()
else()
  set(zelnor_is_laid_out OFF)
endif()

# What others have in folders that the system does not search is found by a path of CMake's.
set(zelnor_others ${ZELNOR_LIBAV_LINK_LIBRARIES})
if(TARGET glog::glog)
  get_target_property(zelnor_glog glog::glog LOCATION)
  list(APPEND zelnor_others "${zelnor_glog}")
endif()
foreach(library IN LISTS zelnor_others)
  cmake_path(GET library PARENT_PATH folder)
  if(NOT folder IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
    set(zelnor_is_laid_out OFF)
  endif()
endforeach()

# zelnor_search_path(<target> <path>): the search path of a target that is installed.
function(zelnor_search_path target path)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${path}" BUILD_WITH_INSTALL_RPATH ${zelnor_is_laid_out})
endfunction()
