#include "Media/Running/SourceKeys.h"

#include "Media/Jobs/FaultList.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/MediaFixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

class SourceKeys : public testing::Test
{
protected:
    std::vector<unsigned int> Read(const std::string& leftOut)
    {
        Place place;
        place.node = 1;
        FaultList faults;
        const auto streams = ReadLeftOut(RecordOf(R"({"source":{"filePath":"in.mkv")" + leftOut + "}}"),
                                         m_file, place, faults);
        m_faults = Sentences(faults.Get());
        return streams;
    }

    const MediaFile m_file = MakeMediaFile({MakeVideoStream(), MakeAudioStream(), MakeAttachedPicture()});
    std::vector<std::string> m_faults;
};

TEST_F(SourceKeys, NameTheStreamsThatSomebodyLeftOut)
{
    EXPECT_THAT(Read(R"(,"leftOut":[{"":1},{"":0}])"), ElementsAre(1U, 0U));
    EXPECT_THAT(Read(R"(,"leftOut":{"":1})"), ElementsAre(1U));
    EXPECT_THAT(Read(R"(,"leftOut":{})"), IsEmpty());
    EXPECT_THAT(Read(""), IsEmpty());
    EXPECT_THAT(m_faults, IsEmpty());
}

TEST_F(SourceKeys, NameOnlyStreamsThatAreThere)
{
    const std::string place = "node 1, leftOut: ";
    for (const std::string index :
         {"3", "-1", "4294967296", "4294967297", "9223372036854775807", "-9223372036854775808"})
    {
        EXPECT_THAT(Read(R"(,"leftOut":[{"":1},{"":)" + index + "}]"), IsEmpty());
        EXPECT_THAT(m_faults, ElementsAre(place + "'in.mkv' does not have a stream " + index));
    }
}

TEST_F(SourceKeys, NameAStreamOnce)
{
    EXPECT_THAT(Read(R"(,"leftOut":[{"":1},{"":1}])"), IsEmpty());
    EXPECT_THAT(m_faults, ElementsAre("node 1, leftOut: stream 1 is listed twice"));
}

TEST_F(SourceKeys, AreAListOfNumbers)
{
    EXPECT_THAT(Read(R"(,"leftOut":1)"), IsEmpty());
    EXPECT_THAT(m_faults, ElementsAre("node 1, leftOut: expected a group, found 1"));
    EXPECT_THAT(Read(R"(,"leftOut":"all")"), IsEmpty());
    EXPECT_THAT(m_faults, ElementsAre("node 1, leftOut: expected a group, found 'all'"));
    EXPECT_THAT(Read(R"(,"leftOut":[{"":1},{"":"0"}])"), IsEmpty());
    EXPECT_THAT(m_faults, ElementsAre("node 1, leftOut: expected the index of a stream, found '0'"));
    EXPECT_THAT(Read(R"(,"leftOut":null)"), IsEmpty());
    EXPECT_THAT(m_faults, ElementsAre("node 1, leftOut: expected a group, found null"));
}

TEST_F(SourceKeys, DoNotNameCovers)
{
    EXPECT_THAT(Read(R"(,"leftOut":{"":2})"), IsEmpty());
    EXPECT_THAT(m_faults, ElementsAre("node 1, leftOut: stream 2 is a cover or an attachment, which "
                                      "'attachments' of a target leaves out"));
}

TEST_F(SourceKeys, OfAFileThatIsNotOpenAreIndexesThatAStreamCanHave)
{
    const auto read = [this](const std::string& index) {
        FaultList faults;
        const auto streams = ReadLeftOut(
            RecordOf(R"({"source":{"filePath":"in.mkv","leftOut":[{"":)" + index + "}]}}"), Place(), faults);
        m_faults = Sentences(faults.Get());
        return streams;
    };
    EXPECT_THAT(read("2147483647"), ElementsAre(2147483647U));
    EXPECT_THAT(m_faults, IsEmpty());
    for (const std::string index : {"-1", "2147483648"})
    {
        EXPECT_THAT(read(index), IsEmpty());
        EXPECT_THAT(m_faults, ElementsAre("leftOut: expected the index of a stream, found " + index));
    }
}

} // namespace
