#include "Media/FFmpeg/FunctionTable.h"

extern const Zelnor::Media::FunctionTable ZelnorFFmpegFunctions = {
    Zelnor::Media::FunctionRows(),
#define ZELNOR_FFMPEG_FUNCTION(name) &::name,
#include "Media/FFmpeg/Functions.def"
#undef ZELNOR_FFMPEG_FUNCTION
};
