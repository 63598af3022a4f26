// Names and numbers of codecs and pixel formats, each asked for in turn.

#include "Benchmarks/Support/Sizes.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/PixelFormatDescription.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace Zelnor::Benchmarks
{
namespace
{

using Conf::mapCodecs;

void CodecByText(benchmark::State& state)
{
    MeasureEach(state, mapCodecs, [](const auto& codec) { return Conf::CodecIDFromTextID(codec.second); });
}
BENCHMARK(CodecByText)->Name("CodecByText/Zelnor");

void CodecByTextHashed(benchmark::State& state)
{
    std::unordered_map<std::string, AVCodecID> ids;
    for (const auto& [id, text] : mapCodecs)
    {
        ids.emplace(text, id);
    }
    MeasureEach(state, mapCodecs, [&](const auto& codec) { return ids.find(codec.second)->second; });
}
BENCHMARK(CodecByTextHashed)->Name("CodecByText/unordered_map");

void TextOfCodec(benchmark::State& state)
{
    MeasureEach(state, mapCodecs,
                [](const auto& codec) { return Conf::CodecIDToTextID(codec.first).data(); });
}
BENCHMARK(TextOfCodec)->Name("TextOfCodec/Zelnor");

void TextOfCodecHashed(benchmark::State& state)
{
    const std::unordered_map<AVCodecID, std::string> texts(mapCodecs.begin(), mapCodecs.end());
    MeasureEach(state, mapCodecs, [&](const auto& codec) { return texts.find(codec.first)->second.data(); });
}
BENCHMARK(TextOfCodecHashed)->Name("TextOfCodec/unordered_map");

void PixelFormatByName(benchmark::State& state)
{
    MeasureEach(state, PixFmtDescription::s_pixelFormatRecords,
                [](const PixFmtDescription& record) { return PixFmtDescription::Find(record.name); });
}
BENCHMARK(PixelFormatByName)->Name("PixelFormatByName/Zelnor");

void PixelFormatByValue(benchmark::State& state)
{
    MeasureEach(state, PixFmtDescription::s_pixelFormatRecords,
                [](const PixFmtDescription& record) { return PixFmtDescription::Find(record.pixFmt); });
}
BENCHMARK(PixelFormatByValue)->Name("PixelFormatByValue/Zelnor");

} // namespace
} // namespace Zelnor::Benchmarks
