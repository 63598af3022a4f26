#pragma once

#include "Media/Validating/DocumentFault.h"

#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// "3:12 /vertices/0/id setting: node 1, id: expected ..." for each fault.
inline std::vector<std::string> FaultLines(const std::string& document)
{
    std::vector<std::string> lines;
    for (const Media::DocumentFault& fault : Media::ValidateDocument(document).faults)
    {
        lines.push_back(std::to_string(fault.line) + ":" + std::to_string(fault.column) + " " +
                        fault.pointer + " " + fault.Name() + ": " + fault.Sentence());
    }
    return lines;
}

/// A job without a fault: a video and a sound of one file become another.
inline constexpr const char* kGoodJob = R"({
  "vertices": [
    {"id": 1, "data": {"data": {"source": {"$$TYPE_ID$$": "sourceFile", "filePath": "in.mkv"}}}},
    {"id": 2, "data": {"data": {"target": {"container": "mp4", "filePath": "out.mp4", "metadata": {"title": "One"}}}}},
    {"id": 3, "data": {"data": {"streamRaw": {"id": 0}}}},
    {"id": 4, "data": {"data": {"streamRaw": {"id": 1}}}}
  ],
  "edges": [
    {"id": 1, "from": 1, "to": 3},
    {"id": 2, "from": 3, "to": 2, "data": {"data": {"format_codec_video": {
      "codec_id": "CODEC_ID_H264", "bitrate": 400000, "frameRateRatio": [25, 1], "PIXELFORMAT": 0}}}},
    {"id": 3, "from": 1, "to": 4},
    {"id": 4, "from": 4, "to": 2, "data": {"data": {"format_codec_audio": {
      "codec_id": "CODEC_ID_AAC", "sample_rate": 48000, "layout": "STEREO"}}}}
  ]
}
)";

inline constexpr const char* kGoodPreset = R"({
  "small": {
    "name": "Small",
    "container": "mp4",
    "$$STREAMS$$": {
      "video": {"codec_id": "CODEC_ID_H264", "width": 640},
      "audio": {"codec_id": "CODEC_ID_AAC", "bitrate": 96000}
    }
  }
}
)";

/// The text with the first `from` replaced. \throw std::out_of_range when there is none
inline std::string With(std::string text, const std::string& from, const std::string& to)
{
    return text.replace(text.find(from), from.size(), to);
}

} // namespace Zelnor::Testing
