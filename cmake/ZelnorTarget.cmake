# What every target of our own is built with. Nothing here reaches a consumer of the installed package.

find_program(ZELNOR_CCACHE ccache)
if(ZELNOR_CCACHE AND PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${ZELNOR_CCACHE}")
endif()

# zelnor_target(<target>): language, warnings, sanitizers and reproducible paths.
function(zelnor_target target)
  set(standard 17)
  if(CMAKE_CXX_STANDARD GREATER standard AND NOT CMAKE_CXX_STANDARD EQUAL 98)
    set(standard ${CMAKE_CXX_STANDARD})
  endif()
  set_target_properties(
    ${target}
    PROPERTIES CXX_STANDARD ${standard}
               CXX_STANDARD_REQUIRED ON
               CXX_EXTENSIONS OFF
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               # Each source that throws has a constant of this name; compiled together, each keeps its own.
               UNITY_BUILD_UNIQUE_ID kUnit)
  target_compile_options(
    ${target}
    PRIVATE -Wall
            -Wextra
            -Wpedantic
            -Wconversion
            -Wshadow
            # Results of the arithmetic are the same to the last bit on every machine.
            -ffp-contract=off)
  # No path of the building machine in a binary. What is optimised when it is linked is described to debuggers then.
  set(prefix_map "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
  target_compile_options(${target} PRIVATE "${prefix_map}")
  target_link_options(${target} PRIVATE "${prefix_map}")
  if(NOT ZELNOR_LOG)
    target_compile_definitions(${target} PRIVATE ZELNOR_WITHOUT_LOG)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Unique symbols pin a library in memory after dlclose.
    target_compile_options(${target} PRIVATE -fno-gnu-unique)
  endif()
  if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # It takes sources that are compiled together for headers.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
  endif()
  if(ZELNOR_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(ZELNOR_SANITIZE)
    # A report names functions and lines, and needs no more of the debug information.
    target_compile_options(${target} PRIVATE "-fsanitize=${ZELNOR_SANITIZE}" -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer -O1 -g1)
    target_link_options(${target} PRIVATE "-fsanitize=${ZELNOR_SANITIZE}")
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
      target_compile_options(${target}
                             PRIVATE "-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/ZelnorSanitizers.ignore")
    endif()
  endif()
endfunction()

# Shared, unless the packager decides otherwise.
set(zelnor_library_kind SHARED)
if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
  set(zelnor_library_kind STATIC)
endif()

# zelnor_library(<target> <output name>): a library of the package. Its file set HEADERS holds what is installed.
function(zelnor_library target output)
  zelnor_target(${target})
  target_compile_features(${target} PUBLIC cxx_std_17)
  if(zelnor_library_kind STREQUAL "STATIC")
    # A module of somebody else may be what it is linked into.
    set_target_properties(${target} PROPERTIES OUTPUT_NAME "${output}" POSITION_INDEPENDENT_CODE ON)
    return()
  endif()
  set_target_properties(
    ${target}
    PROPERTIES OUTPUT_NAME "${output}"
               VERSION "${PROJECT_VERSION}"
               SOVERSION "${PROJECT_VERSION_MAJOR}")
  zelnor_search_path(${target} "${zelnor_library_rpath}")
  set(exports "${PROJECT_BINARY_DIR}/ZelnorExports.map")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/ZelnorExports.map.in" "${exports}" @ONLY)
  # Our functions call each other as they are, without the loader looking for others of the same names. Not what is data:
  # programs have copies of that, which the library must use as well.
  target_link_options(${target} PRIVATE "-Wl,--version-script=${exports}" -Wl,-Bsymbolic-functions)
  if(NOT ZELNOR_SANITIZE)
    # A library lacks nothing; a sanitizer's own functions come with the program.
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS "${exports}")
endfunction()

# zelnor_precompile(<target> <header>...): parses once what takes long to parse in every source of the target.
function(zelnor_precompile target)
  if(ZELNOR_PRECOMPILE)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
