# Finds out which of the codecs in our vocabulary the FFmpeg headers at hand have an identifier for. FFmpeg adds and
# drops identifiers over the years; the header written here is the one place that knows about it.

# zelnor_ffmpeg_codecs(<include dir> <header>): reads the FFmpeg headers in the include directory and writes the header,
# which includes them, defines for each identifier that a codec list names ZELNOR_HAS_AV_CODEC_ID_<NAME> as 1 or 0, and
# does not compile with headers that number these codecs otherwise. Sets ZELNOR_FFMPEG_MAJOR to libavcodec's major version
# (empty when the headers do not say it) and ZELNOR_FFMPEG_NUMBERS to a name for this list of numbers.
function(zelnor_ffmpeg_codecs include_dir header)
  # Where the identifiers have a header of their own, it spares every client the rest of the codec interface.
  set(source libavcodec/codec_id.h)
  if(NOT EXISTS "${include_dir}/${source}")
    set(source libavcodec/avcodec.h)
  endif()
  set(includes "#include <${source}>")
  foreach(version IN ITEMS libavcodec/version_major.h libavcodec/version.h)
    if(EXISTS "${include_dir}/${version}")
      string(PREPEND includes "#include <${version}>\n")
      set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${include_dir}/${version}")
      break()
    endif()
  endforeach()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${include_dir}/${source}"
                                         "${include_dir}/libavcodec/avcodec.h")
  zelnor_ffmpeg_offered("${include_dir}" ${source} "${includes}" offered major)
  zelnor_ffmpeg_wanted(wanted)

  set(rows "")
  set(present "")
  set(missing "")
  foreach(name IN LISTS wanted)
    set(has 1)
    if(name IN_LIST offered)
      list(APPEND present ${name})
    else()
      set(has 0)
      list(APPEND missing ${name})
    endif()
    string(APPEND rows "#define ZELNOR_HAS_${name} ${has}\n")
  endforeach()
  zelnor_ffmpeg_numbers("${include_dir}" "${includes}" "${present}" numbers)
  string(SHA256 identity "${numbers}")
  string(SUBSTRING "${identity}" 0 12 identity)
  set(ZELNOR_FFMPEG_MAJOR "${major}" PARENT_SCOPE)
  set(ZELNOR_FFMPEG_NUMBERS "${identity}" PARENT_SCOPE)

  list(PREPEND numbers "AV_CODEC_ID_NONE=0")
  list(TRANSFORM numbers REPLACE "=" " == ")
  list(JOIN numbers " &&\n                  " numbers)
  set(major_check "")
  if(NOT major STREQUAL "")
    set(major_check
        "#if defined(LIBAVCODEC_VERSION_MAJOR) && LIBAVCODEC_VERSION_MAJOR != ${major}
#error \"This build of Zelnor needs the headers of libavcodec ${major}, and these are another major version's\"
#endif\n")
  endif()
  # Written only when it differs, so that configuring anew compiles nothing anew.
  file(
    CONFIGURE
    OUTPUT "${header}"
    CONTENT
      "#pragma once\n
// Made when the build was configured: which codecs of the vocabulary the FFmpeg headers have an identifier for, and
// that a program sees the same numbers as the library.\n
#include <cstdint> // FFmpeg's headers ask for its macros\n
@major_check@extern \"C\" {\n@includes@\n}\n
@major_check@
@rows@
namespace Zelnor::Conf::details
{

// NOLINTBEGIN(misc-redundant-expression): clang-tidy takes some of so many operands for equal ones.
static_assert(@numbers@,
              \"This build of Zelnor was made with FFmpeg headers that give codecs other numbers\");
// NOLINTEND(misc-redundant-expression)

} // namespace Zelnor::Conf::details

/// Different for each list of these numbers.
#define ZELNOR_CODEC_NUMBERS codecNumbers_@identity@
"
    @ONLY)
  list(JOIN missing ", " missing)
  message(STATUS "FFmpeg codec identifiers: ${include_dir}/${source}, libavcodec ${major}, missing: [${missing}]")
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

# What the compiler makes of a source that includes FFmpeg's headers.
# zelnor_ffmpeg_compile(<include dir> <source text> <result of status> <of output> <of errors> <option of the compiler>...)
function(zelnor_ffmpeg_compile include_dir text status output errors)
  set(probe "${PROJECT_BINARY_DIR}/CMakeFiles/zelnor_ffmpeg_codecs.cpp")
  file(WRITE "${probe}" "${text}")
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
    COMMAND "${CMAKE_CXX_COMPILER}" ${flags} ${ARGN} "${probe}"
    RESULT_VARIABLE result
    OUTPUT_VARIABLE written
    ERROR_VARIABLE said)
  set(${status} "${result}" PARENT_SCOPE)
  set(${output} "${written}" PARENT_SCOPE)
  set(${errors} "${said}" PARENT_SCOPE)
endfunction()

# The identifiers that a header offers, as enumerators or as macros for another enumerator's old name, and libavcodec's
# major version. One run of the preprocessor tells: it settles what depends on FFmpeg's version, and lists the macros too.
function(zelnor_ffmpeg_offered include_dir source includes result result_major)
  zelnor_ffmpeg_compile("${include_dir}" "#include <cstdint>\nextern \"C\" {\n${includes}\n}\n" status text errors
                        -E -dD)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "No codec identifiers can be read from ${include_dir}/${source}.\n${errors}")
  endif()
  set(version "")
  foreach(part IN ITEMS MAJOR MINOR)
    if(text MATCHES "#define LIBAVCODEC_VERSION_${part} +([0-9]+)")
      list(APPEND version "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  list(JOIN version "." found)
  list(POP_FRONT version major)
  set(${result_major} "${major}" PARENT_SCOPE)
  if(NOT text MATCHES "enum AVCodecID[ \t\r\n]*{([^}]*)}")
    message(FATAL_ERROR "Zelnor needs FFmpeg 1.0 or later, that is libavcodec 54.59, whose headers have 'enum AVCodecID'. "
                        "${include_dir}/${source} does not have it; this is libavcodec ${found}.")
  endif()
  string(REGEX MATCHALL "AV_CODEC_ID_[A-Z0-9_]+" offered "${CMAKE_MATCH_1}")
  string(REGEX MATCHALL "#define AV_CODEC_ID_[A-Z0-9_]+" macros "${text}")
  list(TRANSFORM macros REPLACE "#define " "")
  list(APPEND offered ${macros})
  set(${result} ${offered} PARENT_SCOPE)
endfunction()

# The numbers of identifiers, as NAME=number. They are read from the assembler text, so that nothing has to run: another
# machine's compiler tells as well.
function(zelnor_ffmpeg_numbers include_dir includes names result)
  set(text "#include <cstdint>\nextern \"C\" {\n${includes}\n}\nvoid Numbers()\n{\n")
  foreach(name IN LISTS names)
    string(APPEND text "asm volatile(\"\\n.ascii \\\"${name}=%c0\\\"\" ::\"i\"(${name}));\n")
  endforeach()
  zelnor_ffmpeg_compile("${include_dir}" "${text}}\n" status text errors -S -fno-lto -o -)
  string(REGEX MATCHALL "\"AV_CODEC_ID_[A-Z0-9_]+=-?[0-9]+\"" numbers "${text}")
  list(TRANSFORM numbers REPLACE "\"" "")
  list(LENGTH names asked)
  list(LENGTH numbers answered)
  if(NOT status EQUAL 0 OR NOT asked EQUAL answered)
    message(FATAL_ERROR "The numbers of FFmpeg's codecs cannot be read from ${include_dir}.\n${errors}")
  endif()
  set(${result} ${numbers} PARENT_SCOPE)
endfunction()
