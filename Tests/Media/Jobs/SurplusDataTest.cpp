#include "Media/Jobs/SurplusData.h"

#include <gmock/gmock.h>

#include <string>

namespace
{

using namespace Zelnor::Media;
using testing::IsEmpty;

/// A document whose second node and second link hold `data`.
std::string Document(const std::string& data)
{
    return R"({"vertices":[{"id":1},{"id":2,"data":)" + data + R"(}],"edges":[{"from":1,"to":2},{"data":)" +
           data + R"(}],"more":[{"data":)" + data + "}]}";
}

void ExpectFound(const std::string& data, bool isFound)
{
    SCOPED_TRACE(data);
    const SurplusData found = FindSurplusData(Document(data));
    EXPECT_EQ(found.vertices, isFound ? std::vector<std::size_t>{1} : std::vector<std::size_t>());
    EXPECT_EQ(found.edges, found.vertices);
}

TEST(SurplusData, IsWhatFollowsTheFirstMember)
{
    ExpectFound(R"({"data":{"a":1,"b":2}})", true);
    ExpectFound(R"({"data":{"a":{},"b":[1,2],"c":""}})", true);
    ExpectFound(R"({"data":[{"a":1},{"a":2}]})", true);
    ExpectFound("{ \"data\" : [\n {\"a\":1} , {\"b\":2} ] }", true);
}

TEST(SurplusData, IsNotInsideTheRecord)
{
    ExpectFound(R"({"data":{"a":{"b":1,"c":2}}})", false);
    ExpectFound(R"({"data":{"a":[1,2]}})", false);
    ExpectFound(R"({"data":{"a":",\",{"}})", false);
    ExpectFound(R"({"data":{"a\\":","}})", false);
    ExpectFound(R"({"data":[30000,1001]})", false);
    ExpectFound(R"({"data":{}})", false);
    ExpectFound(R"({"data":[]})", false);
    ExpectFound(R"({"data":5})", false);
    ExpectFound("null", false);
}

TEST(SurplusData, OfEqualKeysIsThatOfTheFirst)
{
    EXPECT_THAT(FindSurplusData(R"({"vertices":[],"vertices":[{"data":{"data":{"a":1,"b":2}}}],"edges":[]})")
                    .vertices,
                IsEmpty());
    EXPECT_THAT(
        FindSurplusData(R"({"vertices":[{"data":{"d":{"a":1}},"data":{"data":{"a":1,"b":2}}}],"edges":[]})")
            .vertices,
        IsEmpty());
}

TEST(SurplusData, IsNotUnderOtherKeys)
{
    EXPECT_THAT(
        FindSurplusData(R"({"vertices":[{"x":"data","y":{"data":{"a":1,"b":2}}}],"edges":[]})").vertices,
        IsEmpty());
    EXPECT_THAT(FindSurplusData(R"({"x":"vertices","y":[{"data":{"data":{"a":1,"b":2}}}]})").vertices,
                IsEmpty());
}

} // namespace
