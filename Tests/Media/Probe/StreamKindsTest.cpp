#include "Media/Probe/StreamKinds.h"

#include "Conf/Interfaces/IPreset.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/avutil.h>
}

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;

constexpr StreamKind kKinds[] = {StreamKind::Video, StreamKind::Audio,      StreamKind::Subtitle,
                                 StreamKind::Data,  StreamKind::Attachment, StreamKind::Unknown};

TEST(StreamKinds, AreFoundByEveryNameAndNumberTheyHave)
{
    for (const StreamKind kind : kKinds)
    {
        const StreamKindDescription& row = DescribeKind(kind);
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.kind, kind);
        EXPECT_EQ(KindOfCodecType(row.codecType), kind);
        if (row.mediaType)
        {
            EXPECT_EQ(KindOfMediaType(*row.mediaType), kind);
            EXPECT_EQ(KindOfRecord(*row.recordName), kind);
        }
    }
}

TEST(StreamKinds, AgreeWithTheDescriptorsOfTheirCodecs)
{
    for (const StreamKind kind : kKinds)
    {
        const StreamKindDescription& row = DescribeKind(kind);
        SCOPED_TRACE(row.name);
        const auto descriptor = MakeDescriptor(kind);
        EXPECT_EQ(descriptor->GetProperty().GetName(), *row.recordName);
        EXPECT_EQ(descriptor->GetCodecType(), IsConvertible(kind) ? row.codecType : AVMEDIA_TYPE_UNKNOWN);
    }
}

TEST(StreamKinds, HaveTheNamesThatFFmpegGivesThem)
{
    for (const StreamKind kind : kKinds)
    {
        const StreamKindDescription& row = DescribeKind(kind);
        const char* const name = av_get_media_type_string(static_cast<AVMediaType>(row.codecType));
        EXPECT_EQ(std::string(row.name), name == nullptr ? "unknown" : name);
    }
}

TEST(StreamKinds, AreThoseOfPresetsWhenTheyCanBeConverted)
{
    for (const StreamKind kind : kKinds)
    {
        const auto mediaType = DescribeKind(kind).mediaType;
        EXPECT_EQ(IsConvertible(kind), mediaType.has_value());
        if (mediaType)
        {
            const std::string type = Conf::IPreset::PresetStreamTypeFormMediaType(*mediaType);
            EXPECT_EQ(KindOfMediaType(Conf::IPreset::MediaTypeFromPresetStreamType(type)), kind);
        }
    }
}

TEST(StreamKinds, OfAnythingElseAreUnknown)
{
    EXPECT_EQ(KindOfCodecType(-2), StreamKind::Unknown);
    EXPECT_EQ(KindOfCodecType(AVMEDIA_TYPE_NB), StreamKind::Unknown);
    EXPECT_EQ(KindOfMediaType(static_cast<MediaType>(0)), StreamKind::Unknown);
    EXPECT_EQ(KindOfRecord(""), StreamKind::Unknown);
    EXPECT_EQ(KindOfRecord("format_file"), StreamKind::Unknown);
    EXPECT_STREQ(NameOf(static_cast<StreamKind>(99)), "unknown");
}

} // namespace
