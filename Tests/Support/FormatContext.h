#pragma once

extern "C" {
#include <libavformat/avformat.h>
}

#include <memory>

namespace Zelnor::Testing
{

struct FreeFormatContext
{
    void operator()(AVFormatContext* context) const { avformat_free_context(context); }
};

using FormatContext = std::unique_ptr<AVFormatContext, FreeFormatContext>;

/// A file that there is not, for streams to be made in.
inline FormatContext MakeFormatContext() { return FormatContext(avformat_alloc_context()); }

} // namespace Zelnor::Testing
