# Reads FFmpeg headers of several shapes and compares what is written down about them.

cmake_minimum_required(VERSION 3.25)

set(PROJECT_SOURCE_DIR "${ZELNOR_SOURCE_DIR}")
set(PROJECT_BINARY_DIR "${SCRATCH_DIR}")
set(CMAKE_CXX_FLAGS "-DFROM_THE_FLAGS -O2")
include("${ZELNOR_SOURCE_DIR}/cmake/ZelnorFFmpeg.cmake")
file(REMOVE_RECURSE "${SCRATCH_DIR}")

# expect_has(<shape> <name> <0 or 1>)
function(expect_has shape name has)
  file(STRINGS "${SCRATCH_DIR}/${shape}.h" row REGEX "^#define ZELNOR_HAS_AV_CODEC_ID_${name} ")
  if(NOT row STREQUAL "#define ZELNOR_HAS_AV_CODEC_ID_${name} ${has}")
    message(SEND_ERROR "${shape}: expected ${name} ${has}, found: ${row}")
  endif()
endfunction()

# An old header: everything in one file, tags made by a macro, a switch, no comma at the end.
file(
  WRITE "${SCRATCH_DIR}/old/libavcodec/avcodec.h"
  "
#define MKBETAG(a,b,c,d) ((d) | ((c) << 8) | ((b) << 16) | ((unsigned)(a) << 24))
#define FF_API_VOXWARE 0
enum AVMediaType { AVMEDIA_TYPE_VIDEO };
/* AV_CODEC_ID_MPEG4 is only spoken of here */
enum AVCodecID {
    AV_CODEC_ID_NONE,
    AV_CODEC_ID_H264 = 28,  ///< not AV_CODEC_ID_H263
    AV_CODEC_ID_HEVC= MKBETAG('H','2','6','5'),
#if FF_API_VOXWARE
    AV_CODEC_ID_VOXWARE,
#endif
#ifdef FROM_THE_FLAGS
    AV_CODEC_ID_VIMA = MKBETAG('V','I','M','A'),
#endif
    AV_CODEC_ID_MP3
};
typedef struct AVCodec { enum AVCodecID id; } AVCodec;
")
zelnor_ffmpeg_codecs("${SCRATCH_DIR}/old" "${SCRATCH_DIR}/old.h")
foreach(name IN ITEMS H264 HEVC VIMA MP3)
  expect_has(old ${name} 1)
endforeach()
foreach(name IN ITEMS VOXWARE MPEG4 H263 AAC)
  expect_has(old ${name} 0)
endforeach()
file(STRINGS "${SCRATCH_DIR}/old.h" include REGEX "libavcodec")
if(NOT include STREQUAL "#include <libavcodec/avcodec.h>")
  message(SEND_ERROR "old: ${include}")
endif()
file(STRINGS "${SCRATCH_DIR}/old.h" rows REGEX "^#define ZELNOR_HAS_AV_CODEC_ID_[A-Z0-9_]+ [01]$")
list(LENGTH rows count)
if(NOT count EQUAL 348)
  message(SEND_ERROR "expected 348 rows, found ${count}")
endif()

# A new one: a header of its own, an old name kept as a macro.
file(WRITE "${SCRATCH_DIR}/new/libavcodec/avcodec.h" "#include <libavcodec/codec_id.h>\n")
file(
  WRITE "${SCRATCH_DIR}/new/libavcodec/codec_id.h"
  "
enum AVCodecID {
    AV_CODEC_ID_NONE,
    AV_CODEC_ID_IFF_ILBM,
#define AV_CODEC_ID_IFF_BYTERUN1 AV_CODEC_ID_IFF_ILBM
};
#define AV_CODEC_ID_VIMA AV_CODEC_ID_IFF_ILBM
")
zelnor_ffmpeg_codecs("${SCRATCH_DIR}/new" "${SCRATCH_DIR}/new.h")
foreach(name IN ITEMS IFF_ILBM IFF_BYTERUN1 VIMA)
  expect_has(new ${name} 1)
endforeach()
expect_has(new H264 0)
file(STRINGS "${SCRATCH_DIR}/new.h" include REGEX "libavcodec")
if(NOT include STREQUAL "#include <libavcodec/codec_id.h>")
  message(SEND_ERROR "new: ${include}")
endif()

# What says nothing new is not written anew, so that nothing is compiled anew.
file(TIMESTAMP "${SCRATCH_DIR}/new.h" before "%s")
execute_process(COMMAND "${CMAKE_COMMAND}" -E sleep 1.1)
zelnor_ffmpeg_codecs("${SCRATCH_DIR}/new" "${SCRATCH_DIR}/new.h")
file(TIMESTAMP "${SCRATCH_DIR}/new.h" after "%s")
if(NOT before STREQUAL after)
  message(SEND_ERROR "The header was written anew without need")
endif()
