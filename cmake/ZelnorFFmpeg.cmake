# Finds out which of the codecs in our vocabulary the FFmpeg headers at hand have an identifier for. FFmpeg adds and
# drops identifiers over the years; the header written here is the one place that knows about it.

# zelnor_ffmpeg_codecs(<include dir> <header>): reads the FFmpeg headers in the include directory and writes the header,
# which includes them and defines for each identifier that a codec list names ZELNOR_HAS_AV_CODEC_ID_<NAME> as 1 or 0.
function(zelnor_ffmpeg_codecs include_dir header)
  # Where the identifiers have a header of their own, it spares every client the rest of the codec interface.
  set(source libavcodec/codec_id.h)
  if(NOT EXISTS "${include_dir}/${source}")
    set(source libavcodec/avcodec.h)
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${include_dir}/${source}"
                                         "${include_dir}/libavcodec/avcodec.h")
  zelnor_ffmpeg_offered("${include_dir}" ${source} offered)
  zelnor_ffmpeg_wanted(wanted)

  set(rows "")
  set(missing "")
  foreach(name IN LISTS wanted)
    set(has 1)
    if(NOT name IN_LIST offered)
      set(has 0)
      list(APPEND missing ${name})
    endif()
    string(APPEND rows "#define ZELNOR_HAS_${name} ${has}\n")
  endforeach()
  # Written only when it differs, so that configuring anew compiles nothing anew.
  file(
    CONFIGURE
    OUTPUT "${header}"
    CONTENT
      "#pragma once\n
// Made when the build was configured: which codecs of the vocabulary the FFmpeg headers have an identifier for.\n
#include <cstdint> // FFmpeg's headers ask for its macros\n
extern \"C\" {\n#include <@source@>\n}\n
@rows@"
    @ONLY)
  list(JOIN missing ", " missing)
  message(STATUS "FFmpeg codec identifiers: ${include_dir}/${source}, missing: [${missing}]")
endfunction()

# The identifiers that the rows of the codec lists name. AV_CODEC_ID_NONE is taken for granted.
function(zelnor_ffmpeg_wanted result)
  set(wanted "")
  foreach(list IN ITEMS IFormatCodecVideo IFormatCodecAudio IFormatCodecSubtitle IFormatCodec)
    set(file "${PROJECT_SOURCE_DIR}/Conf/Interfaces/Vocabulary/${list}.def")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    file(STRINGS "${file}" rows REGEX "^ZELNOR_CODEC(_AS)?\\(")
    foreach(row IN LISTS rows)
      if(row MATCHES "^ZELNOR_CODEC_AS\\([A-Z0-9_]+, *(AV_CODEC_ID_[A-Z0-9_]+)\\)")
        list(APPEND wanted ${CMAKE_MATCH_1})
      elseif(row MATCHES "^ZELNOR_CODEC\\((CODEC_ID_[A-Z0-9_]+)\\)")
        list(APPEND wanted AV_${CMAKE_MATCH_1})
      else()
        message(FATAL_ERROR "${file}: no row of a codec list: ${row}")
      endif()
    endforeach()
  endforeach()
  set(${result} ${wanted} PARENT_SCOPE)
endfunction()

# The identifiers that a header offers, as enumerators or as macros for another enumerator's old name. One run of the
# preprocessor tells: it settles what depends on FFmpeg's version, and lists the macros too.
function(zelnor_ffmpeg_offered include_dir source result)
  set(probe "${PROJECT_BINARY_DIR}/CMakeFiles/zelnor_ffmpeg_codecs.cpp")
  file(WRITE "${probe}" "#include <cstdint>\nextern \"C\" {\n#include <${source}>\n}\n")
  separate_arguments(flags NATIVE_COMMAND "${CMAKE_CXX_COMPILER_ARG1} ${CMAKE_CXX_FLAGS}")
  if(CMAKE_CXX_COMPILER_TARGET AND CMAKE_CXX_COMPILE_OPTIONS_TARGET)
    list(APPEND flags "${CMAKE_CXX_COMPILE_OPTIONS_TARGET}${CMAKE_CXX_COMPILER_TARGET}")
  endif()
  if(CMAKE_SYSROOT AND CMAKE_CXX_COMPILE_OPTIONS_SYSROOT)
    list(APPEND flags "${CMAKE_CXX_COMPILE_OPTIONS_SYSROOT}${CMAKE_SYSROOT}")
  endif()
  if(NOT include_dir IN_LIST CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
    list(APPEND flags -I "${include_dir}")
  endif()
  execute_process(
    COMMAND "${CMAKE_CXX_COMPILER}" ${flags} -E -dD "${probe}"
    RESULT_VARIABLE status
    OUTPUT_VARIABLE text
    ERROR_VARIABLE errors)
  if(NOT status EQUAL 0 OR NOT text MATCHES "enum AVCodecID[ \t\r\n]*{([^}]*)}")
    message(FATAL_ERROR "No codec identifiers can be read from ${include_dir}/${source}.\n${errors}")
  endif()
  string(REGEX MATCHALL "AV_CODEC_ID_[A-Z0-9_]+" offered "${CMAKE_MATCH_1}")
  string(REGEX MATCHALL "#define AV_CODEC_ID_[A-Z0-9_]+" macros "${text}")
  list(TRANSFORM macros REPLACE "#define " "")
  list(APPEND offered ${macros})
  set(${result} ${offered} PARENT_SCOPE)
endfunction()
