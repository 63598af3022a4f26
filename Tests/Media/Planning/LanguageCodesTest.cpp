#include "Media/Planning/LanguageCodes.h"

#include <gtest/gtest.h>

namespace
{

using namespace Zelnor::Media;

TEST(LanguageCodes, OfOneLanguageMeanTheSame)
{
    EXPECT_TRUE(IsSameLanguage("deu", "ger"));
    EXPECT_TRUE(IsSameLanguage("ger", "deu"));
    EXPECT_TRUE(IsSameLanguage("eng", "ENG"));
    EXPECT_FALSE(IsSameLanguage("deu", "eng"));
    EXPECT_FALSE(IsSameLanguage("", "eng"));
    EXPECT_FALSE(IsSameLanguage("eng", ""));
}

TEST(LanguageCodes, HaveTheirCounterpartWhereThereIsOne)
{
    EXPECT_EQ(OtherLanguageCode("fre"), "fra");
    EXPECT_EQ(OtherLanguageCode("fra"), "fre");
    EXPECT_EQ(OtherLanguageCode("eng"), "");
}

} // namespace
