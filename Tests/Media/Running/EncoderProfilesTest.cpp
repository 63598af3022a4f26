#include "Media/Running/EncoderProfiles.h"

#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

const AVCodec& Encoder(const char* name)
{
    const AVCodec* const encoder = avcodec_find_encoder_by_name(name);
    if (encoder == nullptr)
    {
        throw std::runtime_error(std::string("FFmpeg does not have ") + name);
    }
    return *encoder;
}

struct Outcome
{
    CodecOptions options;
    std::vector<std::string> faults;
};

/// What is set for a word, by `AddPreset` and the like.
template <class Add>
Outcome ForWord(Add add, const char* encoder, const std::string& key, const std::string& word)
{
    Outcome outcome;
    FaultList faults;
    add(Encoder(encoder), Core::Property(key, word), outcome.options, Place(), faults);
    outcome.faults = Sentences(faults.Get());
    return outcome;
}

TEST(EncoderProfiles, OfMpeg4HaveSettingsInThePlaceOfASpeed)
{
    const Outcome outcome = ForWord(AddPreset, "mpeg4", "preset", "slow");
    EXPECT_EQ(outcome.options, (CodecOptions{{"mbd", "rd"}, {"trellis", "1"}}));
    EXPECT_TRUE(outcome.faults.empty());
}

TEST(EncoderProfiles, OfMpeg4HaveOtherNames)
{
    EXPECT_EQ(
        ForWord(AddProfile, "mpeg4", "profile", Conf::IFormatCodecVideo::TAG_MPEG4_PROFILE_MAIN).options,
        (CodecOptions{{"profile", "mpeg4_main"}}));
}

TEST(EncoderProfiles, RefuseWordsThatTheEncoderDoesNotHave)
{
    EXPECT_EQ(ForWord(AddPreset, "mpeg4", "preset", "odd").faults,
              std::vector<std::string>{"preset: encoder mpeg4 does not have a preset 'odd'"});
    EXPECT_EQ(ForWord(AddProfile, "libx264", "profile", "odd").faults,
              std::vector<std::string>{"profile: encoder libx264 does not have a profile 'odd'"});
    EXPECT_EQ(ForWord(AddTune, "mpeg4", "tune", "film").faults,
              std::vector<std::string>{"tune: encoder mpeg4 does not have a tune 'film'"});
    EXPECT_TRUE(ForWord(AddTune, "libx264", "tune", "film").faults.empty());
}

} // namespace
