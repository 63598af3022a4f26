#include "Conf/Interfaces/IFormatCodecAudio.h"

#include "Conf/Interfaces/ConfException.h"
#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <type_traits>

namespace Zelnor::Conf
{
namespace
{

using Core::Property;
using Testing::ExpectThrow;
using Testing::Thrown;

static_assert(!std::is_default_constructible_v<IFormatCodecAudio>, "Create() is the only door");

SampleInfo MakeInfo(SampleFormats format, int rate, ChannelLayout layout)
{
    SampleInfo info;
    info.Init(format, rate, layout);
    return info;
}

/// A descriptor whose record holds `text` under `key`.
boost::intrusive_ptr<IFormatCodecAudio> CreateWith(const std::string& key, const std::string& text)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetSampleInfo(MakeInfo(SAMPLE_FMT_S16, 44100, CH_LAYOUT_STEREO));
    Property record = audio->GetProperty();
    record.SetChildT(key, text);
    audio->SetProperty(record);
    return audio;
}

TEST(IFormatCodecAudio, LayoutsAreStoredAsTheirTexts)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetChannelLayout(CH_LAYOUT_STEREO);
    EXPECT_EQ(audio->GetProperty()["layout"].GetString(), "STEREO");
    EXPECT_EQ(audio->GetChannelLayout(), CH_LAYOUT_STEREO);
}

TEST(IFormatCodecAudio, SampleFormatsAreStoredAsTheirTexts)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetSampleFormat(SAMPLE_FMT_FLTP);
    EXPECT_EQ(audio->GetProperty()["sample_format"].GetString(), "SAMPLE_FMT_FLTP");
    EXPECT_EQ(audio->GetSampleFormat(), SAMPLE_FMT_FLTP);
}

TEST(IFormatCodecAudio, EveryFormatAndLayoutComesBack)
{
    const auto audio = IFormatCodecAudio::Create();
    for (int format = -1; format <= 9; ++format)
    {
        audio->SetSampleFormat(static_cast<SampleFormats>(format));
        EXPECT_EQ(audio->GetSampleFormat(), format);
    }
    for (int layout = 0; layout <= 27; ++layout)
    {
        audio->SetChannelLayout(static_cast<ChannelLayout>(layout));
        EXPECT_EQ(audio->GetChannelLayout(), layout);
    }
    EXPECT_EQ(audio->GetProperty().Count(), 6u);
}

TEST(IFormatCodecAudio, ATextThatIsNoFormatsIsRefused)
{
    const auto audio = CreateWith("sample_format", "SAMPLE_FMT_FLTp");
    const std::string message = "Provided sample textId is not found in list";
    EXPECT_EQ(ExpectThrow<FormatException>([&] { audio->GetSampleFormat(); }).description, message);
    EXPECT_EQ(ExpectThrow<FormatException>([&] { audio->GetSampleInfo(); }).description, message);
}

TEST(IFormatCodecAudio, ATextThatIsNoLayoutsIsRefused)
{
    const auto audio = CreateWith("layout", "STEREO ");
    const std::string message = "Provided Channel TextID is not found in list";
    EXPECT_EQ(ExpectThrow<FormatException>([&] { audio->GetChannelLayout(); }).description, message);
    EXPECT_EQ(ExpectThrow<FormatException>([&] { audio->GetSampleInfo(); }).description, message);
}

TEST(IFormatCodecAudio, AValueWithoutARecordIsRefusedAndChangesNothing)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetSampleInfo(MakeInfo(SAMPLE_FMT_S16, 44100, CH_LAYOUT_STEREO));
    const Property before = audio->GetProperty();
    const Thrown format =
        ExpectThrow<FormatException>([&] { audio->SetSampleFormat(static_cast<SampleFormats>(10)); });
    EXPECT_EQ(format.description, "Provided sample format is not found in list");
    EXPECT_EQ(format.file, "Conf/Interfaces/ServiceRecords");
    EXPECT_EQ(format.line, 68);
    const Thrown layout =
        ExpectThrow<FormatException>([&] { audio->SetChannelLayout(static_cast<ChannelLayout>(28)); });
    EXPECT_EQ(layout.description, "Provided ChannelLayout is not found in list");
    EXPECT_EQ(audio->GetProperty(), before);
}

/// Shows callers another record than its own.
class Disguised : public IFormatCodecAudio
{
public:
    const Property& GetProperty() const override { return m_shown; }

private:
    Property m_shown{"format_codec_audio"};
};

TEST(IFormatCodecAudio, EveryGetterReadsTheDescriptorsOwnRecord)
{
    const boost::intrusive_ptr<Disguised> audio = new Disguised();
    audio->SetSampleInfo(MakeInfo(SAMPLE_FMT_FLTP, 48000, CH_LAYOUT_QUAD));
    EXPECT_EQ(audio->GetSampleInfo().sampleFormat->format, SAMPLE_FMT_FLTP);
    EXPECT_EQ(audio->GetSampleFormat(), SAMPLE_FMT_FLTP);
    EXPECT_EQ(audio->GetSampleInfo().channelLayout->layout, CH_LAYOUT_QUAD);
    EXPECT_EQ(audio->GetChannelLayout(), CH_LAYOUT_QUAD);
}

TEST(IFormatCodecAudio, SampleInfoIsStoredInOrder)
{
    const auto audio = IFormatCodecAudio::Create();
    Property expected = audio->GetProperty();
    expected.CreateChildT("sample_format", std::string("SAMPLE_FMT_S16"));
    expected.CreateChildT("layout", std::string("STEREO"));
    expected.CreateChildT("sample_rate", 44100LL);
    audio->SetSampleInfo(MakeInfo(SAMPLE_FMT_S16, 44100, CH_LAYOUT_STEREO));
    EXPECT_EQ(audio->GetProperty(), expected);
}

TEST(IFormatCodecAudio, ARateThatIsNotSetIsStoredAsMinusOne)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetSampleInfo(SampleInfo());
    EXPECT_EQ(audio->GetProperty()["sample_rate"].GetInt64(), -1);
    EXPECT_EQ(audio->GetProperty()["sample_format"].GetString(), "SAMPLE_FMT_NONE");
    EXPECT_EQ(audio->GetProperty()["layout"].GetString(), "UNKNOWN");
    EXPECT_EQ(audio->GetSampleInfo().sampleRate, -1);
}

TEST(IFormatCodecAudio, OnlyTheLowHalfOfAStoredRateCounts)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetSampleInfo(SampleInfo());
    Property record = audio->GetProperty();
    record.SetChildT("sample_rate", (3LL << 32) + 48000);
    audio->SetProperty(record);
    EXPECT_EQ(audio->GetSampleInfo().sampleRate, 48000);
}

RC_GTEST_PROP(IFormatCodecAudio, SampleInfoComesBackAsItWasSet, (int rate))
{
    const auto format = static_cast<SampleFormats>(*rc::gen::inRange(-1, 10));
    const auto layout = static_cast<ChannelLayout>(*rc::gen::inRange(0, 28));
    const auto audio = IFormatCodecAudio::Create();
    audio->SetSampleInfo(MakeInfo(format, rate, layout));
    const SampleInfo info = audio->GetSampleInfo();
    RC_ASSERT(info.sampleRate == rate);
    RC_ASSERT(info.sampleFormat == SampleFmtRecord::Find(format));
    RC_ASSERT(info.channelLayout == LayoutRecord::Find(layout));
}

TEST(IFormatCodecAudio, AskingForWhatWasNeverSetIsAnErrorOfTheRecord)
{
    const auto audio = IFormatCodecAudio::Create();
    const auto missing = [](const Thrown& thrown) { return thrown.description.value_or(""); };
    EXPECT_NE(missing(ExpectThrow<Core::PropertyException>([&] {
                  audio->GetSampleFormat();
              })).find("sample_format"),
              std::string::npos);
    EXPECT_NE(
        missing(ExpectThrow<Core::PropertyException>([&] { audio->GetChannelLayout(); })).find("layout"),
        std::string::npos);
    EXPECT_NE(
        missing(ExpectThrow<Core::PropertyException>([&] { audio->GetSampleInfo(); })).find("sample_rate"),
        std::string::npos);
}

TEST(IFormatCodecAudio, AFreshDescriptorHasNoLanguage)
{
    const auto audio = IFormatCodecAudio::Create();
    EXPECT_FALSE(audio->ExistsLanguage());
    EXPECT_EQ(audio->GetLanguage(), "");
}

TEST(IFormatCodecAudio, TheLanguageIsKeptInTheMetadata)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetLanguage("eng");
    EXPECT_TRUE(audio->ExistsLanguage());
    EXPECT_EQ(audio->GetLanguage(), "eng");
    EXPECT_EQ(audio->GetProperty()["metadata"]["language"].GetString(), "eng");
    EXPECT_EQ(audio->GetProperty().Count(), 4u);
    audio->SetLanguage("");
    EXPECT_TRUE(audio->ExistsLanguage());
    EXPECT_EQ(audio->GetMetadata().Count(), 1u);
}

TEST(IFormatCodecAudio, ARecordWithoutMetadataHasNoLanguageAndTakesOne)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetProperty(Property("format_codec_audio"));
    EXPECT_FALSE(audio->ExistsLanguage());
    audio->SetLanguage("eng");
    EXPECT_EQ(audio->GetProperty()["metadata"]["language"].GetString(), "eng");
}

TEST(IFormatCodecAudio, AnyTextIsALanguage)
{
    const auto audio = IFormatCodecAudio::Create();
    const std::string text("\xFF no\0code\n", 10);
    audio->SetLanguage(text);
    EXPECT_EQ(audio->GetLanguage(), text);
}

TEST(IFormatCodecAudio, MetadataThatIsNoGroupHasNoLanguageAndTakesNone)
{
    const auto audio = IFormatCodecAudio::Create();
    audio->SetMetadata(Property("metadata", 5LL));
    EXPECT_FALSE(audio->ExistsLanguage());
    EXPECT_EQ(audio->GetLanguage(), "");
    const Property before = audio->GetProperty();
    const Thrown thrown = ExpectThrow<Core::MethodIsNotApplicable>([&] { audio->SetLanguage("eng"); });
    EXPECT_EQ(thrown.Get<Core::PropertyException::TagPropertyName>(), "metadata");
    EXPECT_EQ(thrown.Get<Core::PropertyException::TagMethodName>(), "SetChildT");
    EXPECT_EQ(audio->GetProperty(), before);
}

TEST(IFormatCodecAudio, ACloneKeepsFormatAndLanguage)
{
    const auto audio = CreateWith("sample_format", "SAMPLE_FMT_DBL");
    audio->SetLanguage("eng");
    const auto clone = audio->Clone();
    EXPECT_EQ(clone->GetRefCount(), 1);
    EXPECT_EQ(clone->GetSampleFormat(), SAMPLE_FMT_DBL);
    EXPECT_EQ(clone->GetLanguage(), "eng");
    clone->SetLanguage("deu");
    EXPECT_EQ(audio->GetLanguage(), "eng");
}

} // namespace
} // namespace Zelnor::Conf
