#include "Media/Options/VideoWords.h"

#include <gtest/gtest.h>

namespace
{

using Zelnor::Media::IsVideoWord;

TEST(VideoWords, AreThoseOfTheConstantsWithThePrefix)
{
    EXPECT_TRUE(IsVideoWord("TAG_X264_PRESET_", "fast"));
    EXPECT_FALSE(IsVideoWord("TAG_X264_TUNE_", "fast"));
    EXPECT_FALSE(IsVideoWord("TAG_X264_PRESET_", "glacial"));
    EXPECT_FALSE(IsVideoWord("TAG_X264_PRESET_", ""));
}

} // namespace
