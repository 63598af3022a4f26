#include "Media/Validating/JsonIndex.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Media;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<JsonIndex::Id> ChildrenOf(const JsonIndex& index, JsonIndex::Id value)
{
    std::vector<JsonIndex::Id> children;
    for (const JsonIndex::Id child : index.Children(value))
    {
        children.push_back(child);
    }
    return children;
}

TEST(JsonIndex, KnowsWhereEachValueStands)
{
    const std::string text = " { \"a\" : [ 1 , \"x,]\\\"\" , { } ] ,\n\"b\":null }";
    const JsonIndex index(text, 5);
    ASSERT_EQ(index.KindOf(0), JsonIndex::Kind::Object);
    EXPECT_EQ(index.OffsetOf(0), 1U);
    const auto members = ChildrenOf(index, 0);
    ASSERT_EQ(members.size(), 2U);
    EXPECT_EQ(index.KeyTextOf(members[0]), "\"a\"");
    EXPECT_EQ(text.substr(index.KeyOffsetOf(members[0]), 3), "\"a\"");
    EXPECT_EQ(index.TextOf(members[0]), "[ 1 , \"x,]\\\"\" , { } ]");
    EXPECT_EQ(index.TextOf(members[1]), "null");
    const auto elements = ChildrenOf(index, members[0]);
    ASSERT_EQ(elements.size(), 3U);
    EXPECT_EQ(index.TextOf(elements[0]), "1");
    EXPECT_EQ(index.TextOf(elements[1]), "\"x,]\\\"\"");
    EXPECT_EQ(index.TextOf(elements[2]), "{ }");
    EXPECT_THAT(ChildrenOf(index, elements[2]), IsEmpty());
}

TEST(JsonIndex, FindsAChildByItsPosition)
{
    std::string text = "[";
    for (int i = 0; i < 1000; ++i)
    {
        text += (i == 0 ? "[" : ",[") + std::to_string(i) + "]";
    }
    text += "]";
    const JsonIndex index(text, 3);
    for (const std::size_t position : {0U, 1U, 63U, 64U, 999U, 500U})
    {
        const auto child = index.ChildAt(0, position);
        ASSERT_TRUE(child) << position;
        EXPECT_EQ(index.TextOf(*child), "[" + std::to_string(position) + "]");
    }
    EXPECT_EQ(index.ChildAt(0, 1000), std::nullopt);
    EXPECT_EQ(index.ChildAt(1, 1), std::nullopt);
    EXPECT_EQ(index.ChildAt(1, 1000), std::nullopt);
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
    const auto members = ChildrenOf(index, 0);
    ASSERT_EQ(members.size(), 2U);
    EXPECT_EQ(index.TextOf(members[0]), R"({"b":{"c":[1]}})");
    EXPECT_THAT(ChildrenOf(index, members[0]), IsEmpty());
    EXPECT_EQ(index.TextOf(members[1]), "2");
}

TEST(JsonIndex, OfAnyDepthNeedsNoStack)
{
    const std::string text = std::string(1'000'000, '[') + std::string(1'000'000, ']');
    EXPECT_FALSE(FindJsonFault(text));
    EXPECT_EQ(ChildrenOf(JsonIndex(text, 3), 0).size(), 1U);
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
