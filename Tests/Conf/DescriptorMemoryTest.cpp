// What a descriptor is like when memory runs out in the middle of a change.

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include "Conf/Private/SetChildren.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Zelnor::Conf
{
namespace
{

using Core::Property;
using Testing::ExpectThrow;
using Testing::RunWithFailure;

/// Lets the first, second, ... allocation of `change` fail until it succeeds, and expects that a failure
/// leaves the record as it was. \returns how many times it failed
template <class Descriptor, class Change>
int ExpectAllOrNothing(Descriptor& descriptor, Change&& change)
{
    const Property before = descriptor.GetProperty();
    for (int failures = 0;; ++failures)
    {
        if (RunWithFailure(failures, [&] { change(descriptor); }))
        {
            return failures;
        }
        EXPECT_EQ(descriptor.GetProperty(), before) << "after failure of allocation " << failures;
    }
}

void InitPal(IFormatCodecVideo& video) { video.InitByPixelAspect(720, 576, 64, 45); }

void SetCdQuality(IFormatCodecAudio& audio)
{
    SampleInfo info;
    info.Init(SAMPLE_FMT_S16, 44100, CH_LAYOUT_STEREO_DOWNMIX);
    audio.SetSampleInfo(info);
}

template <class Descriptor>
void Hold(Descriptor& descriptor, const Property& child)
{
    Property record = descriptor.GetProperty();
    record.SetChild(child.GetName(), child);
    descriptor.SetProperty(record);
}

TEST(DescriptorMemory, TheGeometryIsSetAsAWholeOrNotAtAll)
{
    const auto video = IFormatCodecVideo::Create();
    EXPECT_GE(ExpectAllOrNothing(*video, InitPal), 1);
    EXPECT_EQ(video->GetFrameInfo().width, 720u);
    EXPECT_EQ(video->GetFrameInfo().ay, 45u);
}

TEST(DescriptorMemory, TheBeginningOfTheGeometryIsTakenBackWhenItsEndFails)
{
    // A block has room for eight children, and five are there: only the fourth of the geometry needs memory.
    const auto video = IFormatCodecVideo::Create();
    video->SetPixelFormat(PIX_FMT_YUV420P);
    ASSERT_EQ(video->GetProperty().Count(), 5u);
    EXPECT_EQ(ExpectAllOrNothing(*video, InitPal), 1);
    EXPECT_EQ(video->GetProperty().Count(), 9u);
}

TEST(DescriptorMemory, TheGeometryIsSetAsAWholeOrNotAtAllWhenSomeOfItIsThere)
{
    for (const std::string& key : {IFormatCodecVideo::TAG_WIDTH, IFormatCodecVideo::TAG_HEIGHT,
                                   IFormatCodecVideo::TAG_ASPECTX, IFormatCodecVideo::TAG_ASPECTY})
    {
        const auto video = IFormatCodecVideo::Create();
        Property old(key);
        old.SetChildT("a group where a number belongs", std::string(100, 'x'));
        Hold(*video, old);
        EXPECT_GE(ExpectAllOrNothing(*video, InitPal), 1) << key;
        EXPECT_EQ(video->GetFrameInfo().height, 576u);
        EXPECT_EQ(video->GetProperty().Count(), 8u);
    }
}

TEST(DescriptorMemory, TheGeometryIsChangedWithoutTouchingWhatElseTheRecordHolds)
{
    const auto video = IFormatCodecVideo::Create();
    const Property& metadata = video->GetMetadata();
    InitPal(*video);
    const Property* const width = &video->GetProperty()["width"];
    video->InitByPixelAspect(1920, 1080, 1, 1);
    EXPECT_EQ(&video->GetMetadata(), &metadata);
    EXPECT_EQ(&video->GetProperty()["width"], width);
    EXPECT_EQ(width->GetInt64(), 1920);
}

TEST(DescriptorMemory, SampleInfoIsSetAsAWholeOrNotAtAll)
{
    const auto audio = IFormatCodecAudio::Create();
    EXPECT_GE(ExpectAllOrNothing(*audio, SetCdQuality), 1);
    EXPECT_EQ(audio->GetSampleInfo().sampleRate, 44100);
    for (const std::string& key : {IFormatCodecAudio::TAG_SAMPLE_FORMAT, IFormatCodecAudio::TAG_LAYOUT,
                                   IFormatCodecAudio::TAG_SAMPLE_RATE})
    {
        const auto other = IFormatCodecAudio::Create();
        Hold(*other, Property(key, std::string(100, 'x')));
        EXPECT_GE(ExpectAllOrNothing(*other, SetCdQuality), 1) << key;
        EXPECT_EQ(other->GetSampleInfo().channelLayout->layout, CH_LAYOUT_STEREO_DOWNMIX);
        EXPECT_EQ(other->GetProperty().Count(), 7u);
    }
}

TEST(SetChildren, RefusesARecordThatIsNotAGroupAsSetChildTDoes)
{
    Property number("n", 5);
    const auto thrown = ExpectThrow<Core::MethodIsNotApplicable>([&] { SetChildren(number, {{"a", 1}}); });
    EXPECT_EQ(thrown.Get<Core::PropertyException::TagMethodName>(), "SetChildT");
    EXPECT_EQ(thrown.line, 260);
    EXPECT_EQ(number, Property("n", 5));
}

} // namespace
} // namespace Zelnor::Conf
