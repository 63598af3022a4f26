#include "Media/Jobs/MediaSpan.h"

#include "Media/Jobs/FaultList.h"
#include "Tests/Support/JobFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

struct Reading
{
    MediaSpan span;
    std::vector<std::string> faults;
};

Reading ReadFrom(const std::string& members)
{
    FaultList faults;
    Place place;
    place.node = 2;
    const MediaSpan span = ReadSpan(RecordOf("{\"target\":{" + members + "}}"), place, faults);
    return {span, Sentences(faults.Get())};
}

TEST(MediaSpan, IsAPartWhereItEndsOrBeginsElsewhere)
{
    EXPECT_TRUE((MediaSpan{0, std::nullopt}.IsWhole()));
    EXPECT_FALSE((MediaSpan{0, 5}.IsWhole()));
    EXPECT_FALSE((MediaSpan{5, std::nullopt}.IsWhole()));
}

TEST(MediaSpan, IsTheWholeSourceUnlessARecordSaysOtherwise)
{
    const Reading none = ReadFrom("");
    EXPECT_TRUE(none.span.IsWhole());
    EXPECT_THAT(none.faults, IsEmpty());
    const Reading both = ReadFrom(R"("start":500000,"end":1500000)");
    EXPECT_EQ(both.span.start, 500000);
    EXPECT_EQ(both.span.end, 1500000);
    EXPECT_FALSE(both.span.IsWhole());
    EXPECT_THAT(both.faults, IsEmpty());
}

TEST(MediaSpan, RefusesWhatIsNotATime)
{
    const std::string expected = "expected a time in microseconds, as 1500000, found ";
    EXPECT_THAT(ReadFrom(R"("start":-1)").faults, ElementsAre("node 2, start: " + expected + "-1"));
    EXPECT_THAT(ReadFrom(R"("start":"1s")").faults, ElementsAre("node 2, start: " + expected + "'1s'"));
    EXPECT_THAT(ReadFrom(R"("end":[1,2])").faults, ElementsAre("node 2, end: " + expected + "1/2"));
    EXPECT_THAT(ReadFrom(R"("end":null)").faults, ElementsAre("node 2, end: " + expected + "null"));
}

TEST(MediaSpan, EndsAfterItsBeginning)
{
    EXPECT_THAT(ReadFrom(R"("start":7,"end":7)").faults,
                ElementsAre("node 2, end: expected a time after 7, where the target begins, found 7"));
    EXPECT_THAT(ReadFrom(R"("end":0)").faults,
                ElementsAre("node 2, end: expected a time after 0, where the target begins, found 0"));
    EXPECT_EQ(ReadFrom(R"("start":7,"end":3)").span.end, std::nullopt);
}

TEST(MediaSpan, TellsHowLongTheTargetWillBe)
{
    EXPECT_EQ((MediaSpan{}.DurationOf(10)), 10);
    EXPECT_EQ((MediaSpan{4, 6}.DurationOf(10)), 2);
    EXPECT_EQ((MediaSpan{4, 60}.DurationOf(10)), 6);
    EXPECT_EQ((MediaSpan{40, std::nullopt}.DurationOf(10)), 0);
    EXPECT_EQ((MediaSpan{4, 6}.DurationOf(std::nullopt)), 2);
    EXPECT_EQ((MediaSpan{4, std::nullopt}.DurationOf(std::nullopt)), std::nullopt);
}

} // namespace
