#include "Media/Planning/StreamLosses.h"

#include "Media/Planning/ColorPlan.h"
#include "Media/Planning/EncoderChoice.h"
#include "Media/Planning/HdrPlan.h"
#include "Media/Planning/SampleLosses.h"
#include "Media/Planning/VideoSettings.h"

#include <iterator>
#include <utility>

namespace Zelnor::Media
{

namespace
{

void Add(std::vector<std::string> more, std::vector<std::string>& losses)
{
    std::move(more.begin(), more.end(), std::back_inserter(losses));
}

std::vector<std::string> VideoLosses(const MediaStream& source, const Core::Property& record,
                                     const AVCodec& encoder, const std::string& container)
{
    std::vector<std::string> losses;
    if (source.isInterlaced && DeinterlacingIn(record) == Deinterlacing::EveryFrame)
    {
        losses.emplace_back("one of two fields of its interlaced frames is left out; 'deinterlace' 50p keeps "
                            "the motion of all fields, 'keep' the fields");
    }
    Add(ColorLosses(source, record, encoder, container), losses);
    const std::string hdr = HdrLoss(source, record, encoder, container);
    Add(hdr.empty() ? std::vector<std::string>() : std::vector<std::string>{hdr}, losses);
    Add(PixelLosses(source, record, encoder, container), losses);
    return losses;
}

} // namespace

std::vector<std::string> StreamLosses(const MediaStream& source, const Core::Property& record,
                                      const std::string& container)
{
    const AVCodec* const encoder = ChooseEncoder(record).encoder;
    if (encoder == nullptr)
    {
        return {};
    }
    return source.kind == StreamKind::Video   ? VideoLosses(source, record, *encoder, container)
           : source.kind == StreamKind::Audio ? SoundLosses(source, record, *encoder)
                                              : std::vector<std::string>();
}

} // namespace Zelnor::Media
