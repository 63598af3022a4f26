#include "Media/Running/TargetExpectation.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Jobs/FaultList.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/Running/ContentsExpectation.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"

#include <cstddef>

namespace Zelnor::Media
{

namespace
{

ExpectedStream ExpectationOf(const Transcode& transcode, const TranscodeStream& stream,
                             const StreamCommand& command)
{
    const MediaStream& source = transcode.SourceOf(stream);
    ExpectedStream expected;
    expected.place = stream.place;
    expected.kind = source.kind;
    expected.isCopied = command.isCopied;
    expected.codec =
        command.isCopied
            ? source.codec
            : avcodec_get_name(CodecNumberOf(stream.codec[Conf::IFormatCodec::TAG_CODEC_ID].GetString()));
    if (transcode.container == Conf::IFormatFile::FORMAT_LATM && expected.codec == "aac")
    {
        // The same sound, packed as this container packs it.
        expected.codec = "aac_latm";
    }
    expected.record = stream.codec;
    expected.source = stream.input;
    expected.streams = {stream.stream};
    expected.streams.insert(expected.streams.end(), stream.merged.begin(), stream.merged.end());
    expected.options = command.options;
    return expected;
}

} // namespace

ExpectedFile ExpectationOf(const Transcode& transcode, const TranscodeCommand& command)
{
    ExpectedFile expected;
    expected.place = transcode.place;
    expected.container = transcode.container;
    expected.isPicture = command.isPicture;
    expected.sources = transcode.inputs;
    expected.span = transcode.span;
    for (std::size_t i = 0; i < transcode.streams.size(); ++i)
    {
        expected.streams.push_back(ExpectationOf(transcode, transcode.streams[i], command.streams[i]));
    }
    ExpectContents(transcode, command, expected);
    return expected;
}

ExpectedFile ExpectationOf(const Transcode& transcode)
{
    FaultList faults;
    return ExpectationOf(transcode, MakeTranscodeCommand(transcode, faults));
}

} // namespace Zelnor::Media
