#include "Tests/Support/CompactJson.h"

#include <gtest/gtest.h>

namespace Zelnor::Testing
{
namespace
{

TEST(CompactJson, DropsTheWhiteSpaceBetweenTokens)
{
    EXPECT_EQ(CompactJson("\n  {\r\n\t\"a\": [1, 2],\n \"b\" : null }\n"), R"({"a":[1,2],"b":null})");
    EXPECT_EQ(CompactJson(""), "");
}

TEST(CompactJson, KeepsEveryByteOfAString)
{
    EXPECT_EQ(CompactJson("{ \"a b\" : \"\t c\n\" }"), "{\"a b\":\"\t c\n\"}");
    EXPECT_EQ(CompactJson("\"\xC3\x9F \xFF\""), "\"\xC3\x9F \xFF\"");
}

TEST(CompactJson, FindsTheEndOfAStringBehindEscapes)
{
    EXPECT_EQ(CompactJson(R"(["a\" b" , 1])"), R"(["a\" b",1])");
    EXPECT_EQ(CompactJson(R"(["a\\" , " b "])"), R"(["a\\"," b "])");
    EXPECT_EQ(CompactJson(R"(["\\\" " , 1])"), R"(["\\\" ",1])");
}

} // namespace
} // namespace Zelnor::Testing
