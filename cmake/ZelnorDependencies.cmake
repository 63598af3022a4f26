# What the libraries are built with. Boost, RapidJSON and FFmpeg's codec identifiers appear in the public headers; glog
# does not, and only logging needs it.

# Global, so that a project that adds this one as a subfolder sees what our targets name.
find_package(Boost 1.74 REQUIRED GLOBAL)
if(ZELNOR_LOG)
  find_package(glog REQUIRED GLOBAL)
endif()
find_path(ZELNOR_RAPIDJSON_INCLUDE_DIR rapidjson/document.h REQUIRED)
find_path(ZELNOR_AVCODEC_INCLUDE_DIR libavcodec/avcodec.h REQUIRED)
mark_as_advanced(ZELNOR_RAPIDJSON_INCLUDE_DIR ZELNOR_AVCODEC_INCLUDE_DIR)
include(ZelnorRapidJson)
zelnor_rapidjson_mended("${ZELNOR_RAPIDJSON_INCLUDE_DIR}" "${PROJECT_BINARY_DIR}/rapidjson-mended"
                        ZELNOR_RAPIDJSON_MENDED_DIR)
include(ZelnorFFmpeg)
zelnor_ffmpeg_codecs("${ZELNOR_AVCODEC_INCLUDE_DIR}"
                     "${ZELNOR_GENERATED_DIR}/Conf/Interfaces/Vocabulary/FFmpegCodecs.h")

# FFmpeg's libraries: the media library needs them, and the tests compare our tables with theirs where they are at hand.
if(ZELNOR_BUILD_MEDIA)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(ZELNOR_LIBAV REQUIRED IMPORTED_TARGET GLOBAL libavformat libavcodec libavutil)
elseif(ZELNOR_BUILD_TESTS)
  find_package(PkgConfig)
  if(PkgConfig_FOUND)
    pkg_check_modules(ZELNOR_LIBAV IMPORTED_TARGET GLOBAL libavformat libavcodec libavutil)
  endif()
endif()
