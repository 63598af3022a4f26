#include "Media/MediaException.h"

#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;

TEST(Place, TellsEverythingThatIsKnown)
{
    Place place;
    EXPECT_EQ(place.Text(), "");
    place.link = {3, 2};
    place.streamKind = "video";
    place.stream = 0;
    EXPECT_EQ(place.Text(), "link 3 -> 2, video stream 0");
    place.file = "job.json";
    place.key = "width";
    EXPECT_EQ(place.Text(), "job.json: link 3 -> 2, video stream 0, width");
    EXPECT_EQ(place.TextInDocument(), "link 3 -> 2, video stream 0, width");
}

TEST(Place, OfAFileAloneIsTheFile) { EXPECT_EQ(Place{"job.json"}.Text(), "job.json"); }

TEST(Place, StandsInTheDescriptionAndTheTagsOfAnException)
{
    Place place{"job.json"};
    place.node = 7;
    place.stream = 1;
    place.key = "fps";
    const Testing::Thrown thrown = Testing::ExpectThrow<JobException>(
        [&] { ZELNOR_THROW("Tests/Media/PlaceTest", MakeError<JobException>(place, "unknown")); });
    EXPECT_EQ(thrown.description, "job.json: node 7, stream 1, fps: unknown");
    EXPECT_EQ(thrown.Get<MediaException::TagFile>(), "job.json");
    EXPECT_EQ(thrown.Get<MediaException::TagNode>(), 7);
    EXPECT_EQ(thrown.Get<MediaException::TagLink>(), std::nullopt);
    EXPECT_EQ(thrown.Get<MediaException::TagStream>(), 1u);
    EXPECT_EQ(thrown.Get<MediaException::TagKey>(), "fps");
}

TEST(Place, OfAnInnerKeyHasThePathToIt)
{
    const Place place{"p.json"};
    EXPECT_EQ(place.Under("p").Text(), "p.json: p");
    EXPECT_EQ(place.Under("p").Under("bitrate").Text(), "p.json: p.bitrate");
    EXPECT_EQ(place.Under("p").At("bitrate").Text(), "p.json: bitrate");
}

TEST(Place, ThatIsNotKnownLeavesTheReasonAlone)
{
    const JobException exception = MakeError<JobException>(Place(), "reason");
    EXPECT_EQ(*boost::get_error_info<TagDescription>(exception), "reason");
}

} // namespace
