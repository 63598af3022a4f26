# RapidJSON 1.1, its newest release, assigns to a constant member in `GenericStringRef`. Nobody calls that operator, but
# Clang 19 and later refuse the definition. RapidJSON's sources have since removed it.

# zelnor_rapidjson_mended(<include dir> <folder> <result>): when the compiler is one of those and the header at hand is the
# faulty one, a copy without the operator is put into the folder, and the result names it, for a place in the search path
# before the header's own. Otherwise the result is empty.
function(zelnor_rapidjson_mended include_dir folder result)
  set(${result} "" PARENT_SCOPE)
  set(header "${include_dir}/rapidjson/document.h")
  file(READ "${header}" text)
  set(faulty "{ s = rhs.s; length = rhs.length; }")
  string(FIND "${text}" "${faulty}" place)
  if(place EQUAL -1 OR NOT (CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 19))
    return()
  endif()
  string(REPLACE "GenericStringRef& operator=(const GenericStringRef& rhs) ${faulty}"
                 "GenericStringRef& operator=(const GenericStringRef& rhs) = delete;" mended "${text}")
  if(mended STREQUAL text)
    message(WARNING "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} may not compile ${header}: a newer RapidJSON helps.")
    return()
  endif()
  # Its neighbours are the header's own.
  string(REGEX REPLACE "#include \"([a-z/]+[.]h)\"" "#include <rapidjson/\\1>" mended "${mended}")
  file(CONFIGURE OUTPUT "${folder}/rapidjson/document.h" CONTENT "@mended@" @ONLY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${header}")
  message(STATUS "RapidJSON: ${header} is mended for ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}")
  set(${result} "${folder}" PARENT_SCOPE)
endfunction()
