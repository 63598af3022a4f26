# Where the libraries work: what they ask of the system has been tried there and nowhere else.

if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
  message(
    FATAL_ERROR
      "Zelnor supports Linux only, and this is a build for ${CMAKE_SYSTEM_NAME}. Its libraries rely on ELF export maps, "
      "its call stacks on glibc, and its media library on Linux processes.")
endif()

set(zelnor_oldest_GNU 12)
set(zelnor_oldest_Clang 14)
set(zelnor_oldest "${zelnor_oldest_${CMAKE_CXX_COMPILER_ID}}")
if(NOT zelnor_oldest OR CMAKE_CXX_COMPILER_VERSION VERSION_LESS zelnor_oldest)
  message(
    WARNING "Zelnor is tested with GCC ${zelnor_oldest_GNU}, Clang ${zelnor_oldest_Clang} and later ones. "
            "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} may not compile it.")
endif()
