#include "Media/Validating/JsonIndex.h"

#include <gmock/gmock.h>

#include <string>

namespace
{

using namespace Zelnor::Media;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(JsonIndex, KnowsWhereEachValueStands)
{
    const std::string text = " { \"a\" : [ 1 , \"x,]\\\"\" , { } ] ,\n\"b\":null }";
    const JsonIndex index(text, 5);
    ASSERT_EQ(index.KindOf(0), JsonIndex::Kind::Object);
    EXPECT_EQ(index.OffsetOf(0), 1U);
    const auto members = index.Children(0);
    ASSERT_EQ(members.size(), 2U);
    EXPECT_EQ(index.KeyTextOf(members[0]), "\"a\"");
    EXPECT_EQ(text.substr(index.KeyOffsetOf(members[0]), 3), "\"a\"");
    EXPECT_EQ(index.TextOf(members[0]), "[ 1 , \"x,]\\\"\" , { } ]");
    EXPECT_EQ(index.TextOf(members[1]), "null");
    const auto elements = index.Children(members[0]);
    ASSERT_EQ(elements.size(), 3U);
    EXPECT_EQ(index.TextOf(elements[0]), "1");
    EXPECT_EQ(index.TextOf(elements[1]), "\"x,]\\\"\"");
    EXPECT_EQ(index.TextOf(elements[2]), "{ }");
    EXPECT_THAT(index.Children(elements[2]), IsEmpty());
}

TEST(JsonIndex, GivesPointersWithTheirEscapes)
{
    const std::string text = R"({"a/b~":[0,{"":true}]})";
    const JsonIndex index(text, 5);
    EXPECT_EQ(index.PointerTo(0), "");
    EXPECT_EQ(index.PointerTo(1), "/a~1b~0");
    EXPECT_EQ(index.PointerTo(2), "/a~1b~0/0");
    EXPECT_EQ(index.PointerTo(4), "/a~1b~0/1/");
}

TEST(JsonIndex, ReadsKeysThatAreWrittenWithEscapes)
{
    const std::string text = R"({"\u0069d":1,"id":2})";
    const JsonIndex index(text, 1);
    const auto member = index.Member(0, "id");
    ASSERT_TRUE(member);
    EXPECT_EQ(index.TextOf(*member), "1");
    EXPECT_FALSE(index.Member(0, "from"));
}

TEST(JsonIndex, GoesAsDeepAsItIsAskedFor)
{
    const std::string text = R"({"a":{"b":{"c":[1]}},"d":2})";
    const JsonIndex index(text, 1);
    const auto members = index.Children(0);
    ASSERT_EQ(members.size(), 2U);
    EXPECT_EQ(index.TextOf(members[0]), R"({"b":{"c":[1]}})");
    EXPECT_THAT(index.Children(members[0]), IsEmpty());
    EXPECT_EQ(index.TextOf(members[1]), "2");
}

TEST(JsonIndex, OfAnyDepthNeedsNoStack)
{
    const std::string text = std::string(1'000'000, '[') + std::string(1'000'000, ']');
    EXPECT_FALSE(FindJsonFault(text));
    EXPECT_EQ(JsonIndex(text, 3).Children(0).size(), 1U);
}

TEST(JsonFault, TellsTheByteThatIsWrong)
{
    const auto offsetIn = [](const std::string& text) { return FindJsonFault(text)->offset; };
    EXPECT_EQ(offsetIn(""), 0U);
    EXPECT_EQ(offsetIn("{\"a\":x}"), 5U);
    EXPECT_EQ(offsetIn("[1,]"), 3U);
    EXPECT_EQ(offsetIn("{} {}"), 3U);
    EXPECT_EQ(offsetIn(std::string("{}\0{}", 5)), 2U);
    EXPECT_EQ(FindJsonFault(std::string("{}\0", 3))->reason, "A NUL byte follows the document.");
}

} // namespace
