#include "Conf/Interfaces/IFormatCodecSubtitle.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace Zelnor::Conf
{
namespace
{

using Core::Property;

static_assert(sizeof(IFormatCodecSubtitle) == sizeof(IFormatCodec), "it counts with its base's counter");
static_assert(!std::is_default_constructible_v<IFormatCodecSubtitle>, "Create() is the only door");

TEST(IFormatCodecSubtitle, ACloneIsEqualAndCountsItsOwnReferences)
{
    const auto subtitle = IFormatCodecSubtitle::Create();
    Property record = subtitle->GetProperty();
    record.SetChildT(IFormatCodecSubtitle::TAG_CHARSET_ENCODING,
                     IFormatCodecSubtitle::NATIVE_CHARSET_ENCODING);
    record.SetChildT(IFormatCodecSubtitle::TAG_DVB_WIDTH, 720LL);
    subtitle->SetProperty(record);
    const auto held = subtitle;
    const auto clone = subtitle->Clone();
    EXPECT_EQ(clone->GetRefCount(), 1);
    EXPECT_EQ(subtitle->GetRefCount(), 2);
    EXPECT_EQ(clone->GetProperty(), record);
    EXPECT_TRUE(clone->Compare(subtitle));
    clone->SetMetadata(Property("metadata", 5LL));
    EXPECT_EQ(subtitle->GetProperty(), record);
}

TEST(IFormatCodecSubtitle, CloneBaseIsACloneOfTheSameKind)
{
    const auto clone = IFormatCodecSubtitle::Create()->CloneBase();
    EXPECT_EQ(clone->GetCodecType(), 3);
    EXPECT_NE(dynamic_cast<IFormatCodecSubtitle*>(clone.get()), nullptr);
}

TEST(IFormatCodecSubtitle, TheDefaultEncodingIsTheEmptyText)
{
    EXPECT_EQ(IFormatCodecSubtitle::SUBTITLE_ENCODING_DEFAULT, std::string());
}

} // namespace
} // namespace Zelnor::Conf
