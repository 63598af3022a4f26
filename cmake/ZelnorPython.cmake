# What the Python package and its tests are built with.

# Debian's own interpreter is the one that Debian's pybind11, pytest and mypy are for, whatever stands before it in PATH.
set(ZELNOR_PYTHON "/usr/bin/python3" CACHE FILEPATH "The interpreter that the Python package is built for")
set(Python_EXECUTABLE "${ZELNOR_PYTHON}")
find_package(Python 3.11 REQUIRED COMPONENTS Interpreter Development.Module)
# pybind11's own search takes the same one.
set(PYTHON_EXECUTABLE "${Python_EXECUTABLE}")
find_package(pybind11 2.10 REQUIRED CONFIG)
set(ZELNOR_PYTHON_PATH "${PROJECT_BINARY_DIR}/python")

# zelnor_python_module(<target> <name> <folder> <source>...): a module that Python imports from the folder by the name.
function(zelnor_python_module target name folder)
  pybind11_add_module(${target} MODULE NO_EXTRAS ${ARGN})
  zelnor_target(${target})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} LIBRARY_OUTPUT_DIRECTORY "${folder}")
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${target} PRIVATE Zelnor::Media)
  # Shares neither the base of its classes nor the translation of exceptions with the modules of others.
  target_compile_definitions(${target} PRIVATE "PYBIND11_INTERNALS_KIND=\"_zelnor\"")
endfunction()
