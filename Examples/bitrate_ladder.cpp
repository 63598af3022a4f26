#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <iostream>

using namespace Zelnor;
using namespace Zelnor::Conf;

namespace
{

/// A rung: how H.264 of that size is encoded, with the bitrate that suits it.
boost::intrusive_ptr<const IFormatCodecVideo> MakeRung(std::uint32_t width, std::uint32_t height)
{
    const auto video = IFormatCodecVideo::Create();
    video->InitByFrameAspect(width, height, 16, 9);
    video->SetFrameRate(25, 1);
    Core::Property record = video->GetProperty();
    record.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecVideo::CODEC_ID_H264);
    record.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_VBR);
    record.SetChildT(IFormatCodec::TAG_QUALITY, 0LL);
    video->SetProperty(record);
    record.SetChildT(IFormatCodec::TAG_BITRATE, GetDefaultVideoBitrate(video));
    video->SetProperty(record);
    return video;
}

} // namespace

int main()
{
    constexpr std::pair<std::uint32_t, std::uint32_t> sizes[] = {
        {1920, 1080}, {1280, 720}, {1024, 576}, {640, 360}, {426, 240}};
    long long total = 0;
    for (const auto& [width, height] : sizes)
    {
        const auto rung = MakeRung(width, height);
        const Core::Property& record = rung->GetProperty();
        const long long bitrate = record[IFormatCodec::TAG_BITRATE].GetInt64();
        total += bitrate;
        std::cout << rung->GetFrameInfo() << ": " << bitrate << " bit/s, from " << GetMinBitrate(record)
                  << " to " << GetMaxBitrate(record) << "\n";
    }
    std::cout << "an hour of all of them: " << total / 8 * 3600 / 1'000'000 << " MB\n";
}
