#include "Conf/Interfaces/IFormatCodec.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Tests/Support/CountedBlob.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/VirtualSlot.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

namespace Zelnor::Conf
{
namespace
{

using Core::Property;
using Testing::CountedBlob;
using Testing::ExpectThrow;
using Testing::Thrown;
using Testing::VirtualSlot;

static_assert(std::is_convertible_v<IFormatCodec*, IFormat*>);
static_assert(IFormatCodec::MAX_QUALITY == 32);
static_assert(!std::is_default_constructible_v<IFormatCodec> &&
                  !std::is_constructible_v<IFormatCodec, std::string>,
              "Create() is the only door");
// A codec derives from IFormat plainly, unlike a file: a pointer to it can be cast down.
static_assert(std::is_same_v<decltype(static_cast<IFormatCodec*>(std::declval<IFormat*>())), IFormatCodec*>);

/// One descriptor of each kind.
std::vector<boost::intrusive_ptr<IFormatCodec>> CreateOneOfEach()
{
    return {IFormatCodec::Create(), IFormatCodecVideo::Create(), IFormatCodecAudio::Create(),
            IFormatCodecSubtitle::Create()};
}

/// What `SetOptions...` leave under their key: the value and the children of `options`.
Property Named(const std::string& name, const Property& options)
{
    Property parent("");
    return parent.SetChild(name, options);
}

TEST(IFormatCodec, VirtualFunctionsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&IFormatCodec::AddRef), 2u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::GetRefCount), 3u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::Release), 4u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::GetCodecType), 7u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::SetOptionsEncode), 8u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::GetOptionsEncode), 9u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::SetOptionsAnalyze), 10u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::GetOptionsAnalyze), 11u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::SetPrivateData), 12u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::GetPrivateData), 13u);
    EXPECT_EQ(VirtualSlot(&IFormatCodec::CloneBase), 14u);
    EXPECT_EQ(VirtualSlot(&IFormatCodecAudio::GetLanguage), 15u);
    EXPECT_EQ(VirtualSlot(&IFormatCodecAudio::SetLanguage), 16u);
}

TEST(IFormatCodec, AFreshRecordHasFourChildrenInTheirOrder)
{
    const char* const names[] = {"", "format_codec_video", "format_codec_audio", "format_codec_subtitle"};
    const auto codecs = CreateOneOfEach();
    for (std::size_t i = 0; i < codecs.size(); ++i)
    {
        Property expected(names[i]);
        expected.SetChild("metadata");
        expected.SetChild("codec.options.encode");
        expected.SetChild("codec.options.analyze");
        expected.SetChildT("name", std::string("Unknown codec"));
        EXPECT_EQ(codecs[i]->GetProperty(), expected);
        ASSERT_EQ(codecs[i]->GetInternalProperties().size(), 1u);
        EXPECT_EQ(codecs[i]->GetInternalProperties().get<std::string>(TAG_OBJECT), names[i]);
        EXPECT_EQ(codecs[i]->GetPrivateData(), nullptr);
        EXPECT_EQ(codecs[i]->GetRefCount(), 1);
    }
}

TEST(IFormatCodec, KindsAreFFmpegsNumbers)
{
    const auto codecs = CreateOneOfEach();
    EXPECT_EQ(codecs[0]->GetCodecType(), -1);
    EXPECT_EQ(codecs[1]->GetCodecType(), 0);
    EXPECT_EQ(codecs[2]->GetCodecType(), 1);
    EXPECT_EQ(codecs[3]->GetCodecType(), 3);
}

TEST(IFormatCodec, ACloneIsOfTheSameClassEqualAndCountedByItself)
{
    for (const auto& codec : CreateOneOfEach())
    {
        codec->SetMetadata(Property("metadata", 5LL));
        codec->GetInternalProperties().put("runtime", "yes");
        const auto held = codec;
        const auto clone = codec->CloneBase();
        const IFormatCodec& original = *codec;
        const IFormatCodec& copy = *clone;
        EXPECT_EQ(typeid(copy), typeid(original));
        EXPECT_EQ(clone->GetCodecType(), codec->GetCodecType());
        EXPECT_TRUE(clone->Compare(codec));
        EXPECT_EQ(clone->GetInternalProperties(), codec->GetInternalProperties());
        EXPECT_EQ(clone->GetRefCount(), 1);
    }
}

TEST(IFormatCodec, ChangingACloneLeavesItsSourceAlone)
{
    for (const auto& codec : CreateOneOfEach())
    {
        const Property before = codec->GetProperty();
        const auto clone = codec->CloneBase();
        clone->SetMetadata(Property("metadata", 5LL));
        clone->SetOptionsEncode(Property("", 6LL));
        clone->SetPrivateData(CountedBlob::Create());
        EXPECT_EQ(codec->GetProperty(), before);
        EXPECT_EQ(codec->GetPrivateData(), nullptr);
    }
}

TEST(IFormatCodec, ACloneSharesThePrivateData)
{
    for (const auto& codec : CreateOneOfEach())
    {
        const auto blob = CountedBlob::Create();
        codec->SetPrivateData(blob);
        EXPECT_EQ(blob->GetRefCount(), 2);
        const auto clone = codec->CloneBase();
        EXPECT_EQ(clone->GetPrivateData(), blob);
        EXPECT_EQ(blob->GetRefCount(), 3);
        EXPECT_TRUE(clone->Compare(codec));
    }
}

template <class Codec>
void ExpectEveryKindOfCopySharesTheBlob()
{
    const auto codec = Codec::Create();
    const auto blob = CountedBlob::Create();
    codec->SetPrivateData(blob);
    EXPECT_EQ(codec->Clone()->GetPrivateData(), blob);
    const Codec copy(*codec);
    EXPECT_EQ(copy.GetPrivateData(), blob);
    EXPECT_EQ(copy.GetRefCount(), 0);
    EXPECT_EQ(copy.GetProperty(), codec->GetProperty());
}

TEST(IFormatCodec, EveryKindOfCopySharesThePrivateData)
{
    ExpectEveryKindOfCopySharesTheBlob<IFormatCodecVideo>();
    ExpectEveryKindOfCopySharesTheBlob<IFormatCodecAudio>();
    ExpectEveryKindOfCopySharesTheBlob<IFormatCodecSubtitle>();
}

TEST(IFormatCodec, SettingTheSamePrivateDataAgainKeepsIt)
{
    const int before = CountedBlob::GetAlive();
    const auto codec = IFormatCodec::Create();
    codec->SetPrivateData(CountedBlob::Create());
    const IBlob* const blob = codec->GetPrivateData().get();
    codec->SetPrivateData(codec->GetPrivateData());
    EXPECT_EQ(codec->GetPrivateData().get(), blob);
    EXPECT_EQ(CountedBlob::GetAlive(), before + 1);
}

TEST(IFormatCodec, ANullPointerClearsThePrivateData)
{
    const int before = CountedBlob::GetAlive();
    const auto codec = IFormatCodec::Create();
    codec->SetPrivateData(CountedBlob::Create());
    codec->SetPrivateData(nullptr);
    EXPECT_EQ(codec->GetPrivateData(), nullptr);
    EXPECT_EQ(CountedBlob::GetAlive(), before);
}

TEST(IFormatCodec, PrivateDataLivesAsLongAsAnybodyHoldsIt)
{
    const int before = CountedBlob::GetAlive();
    boost::intrusive_ptr<IBlob> blob;
    for (auto& codec : CreateOneOfEach())
    {
        codec->SetPrivateData(CountedBlob::Create());
        blob = codec->GetPrivateData();
    }
    EXPECT_EQ(CountedBlob::GetAlive(), before + 1);
    EXPECT_EQ(blob->GetRefCount(), 1);
    blob.reset();
    EXPECT_EQ(CountedBlob::GetAlive(), before);
}

TEST(IFormatCodec, PrivateDataIsNoPartOfTheRecord)
{
    const auto codec = IFormatCodec::Create();
    const auto other = IFormatCodec::Create();
    codec->SetPrivateData(CountedBlob::Create());
    EXPECT_TRUE(codec->Compare(other));
}

TEST(IFormatCodec, OptionsTakeValueAndChildrenAndKeepTheirKey)
{
    Property options("mine");
    options.SetChildT("crf", 23LL);
    const auto codec = IFormatCodec::Create();
    codec->SetOptionsEncode(options);
    EXPECT_EQ(codec->GetOptionsEncode(), Named("codec.options.encode", options));
    EXPECT_EQ(codec->GetOptionsAnalyze(), Property("codec.options.analyze"));

    codec->SetOptionsAnalyze(Property("mine", 5LL));
    EXPECT_EQ(codec->GetOptionsAnalyze(), Property("codec.options.analyze", 5LL));
    EXPECT_EQ(codec->GetOptionsEncode(), Named("codec.options.encode", options));
    EXPECT_EQ(codec->GetProperty().Count(), 4u);
    EXPECT_EQ(&codec->GetOptionsEncode(), &codec->GetProperty()[1ul]);
    EXPECT_EQ(&codec->GetOptionsAnalyze(), &codec->GetProperty()[2ul]);
}

TEST(IFormatCodec, OptionsMayBeSetFromTheRecordItself)
{
    const auto codec = IFormatCodec::Create();
    const Property before = codec->GetProperty();
    codec->SetOptionsEncode(codec->GetProperty());
    EXPECT_EQ(codec->GetOptionsEncode(), Named("codec.options.encode", before));
}

TEST(IFormatCodec, OptionsAreCreatedWhenTheRecordHasNone)
{
    const auto codec = IFormatCodec::Create();
    codec->SetProperty(Property("bare"));
    codec->SetOptionsAnalyze(Property("", 2LL));
    codec->SetOptionsEncode(Property("", 1LL));
    EXPECT_EQ(codec->GetOptionsEncode().GetInt64(), 1);
    EXPECT_EQ(codec->GetOptionsAnalyze().GetInt64(), 2);
}

TEST(IFormatCodec, AskingForOptionsThatAreNotThereIsAnErrorOfTheRecord)
{
    const auto codec = IFormatCodec::Create();
    codec->SetProperty(Property("bare"));
    const Thrown encode = ExpectThrow<Core::PropertyException>([&] { codec->GetOptionsEncode(); });
    ASSERT_TRUE(encode.description);
    EXPECT_NE(encode.description->find("bare"), std::string::npos);
    EXPECT_NE(encode.description->find("codec.options.encode"), std::string::npos);
    const Thrown analyze = ExpectThrow<Core::PropertyException>([&] { codec->GetOptionsAnalyze(); });
    EXPECT_NE(analyze.description.value_or("").find("codec.options.analyze"), std::string::npos);
}

TEST(IFormatCodec, ReferencesAreThoseOfTheCompleteObject)
{
    for (const auto& codec : CreateOneOfEach())
    {
        boost::intrusive_ptr<const IFormat> asFormat = codec;
        boost::intrusive_ptr<const IRefCountable> asCountable = codec;
        const int count = codec->GetRefCount();
        EXPECT_EQ(asFormat->GetRefCount(), count);
        EXPECT_EQ(asCountable->AddRef(), count + 1);
        EXPECT_EQ(codec->Release(), count);
    }
}

TEST(IFormatCodec, ADerivedClassIsDeletedAsAWhole)
{
    static int destroyed = 0;
    class Mortal : public IFormatCodec
    {
    public:
        Mortal() : IFormatCodec("mortal") {}
        ~Mortal() override { ++destroyed; }
    };
    boost::intrusive_ptr<IFormat> codec = new Mortal();
    codec.reset();
    EXPECT_EQ(destroyed, 1);
}

RC_GTEST_PROP(IFormatCodec, CloneAndSourceNeverShareARecord, (const std::string& key, long long value))
{
    for (const auto& codec : CreateOneOfEach())
    {
        Property record = codec->GetProperty();
        record.SetChildT("key:" + key, value);
        codec->SetProperty(record);
        const auto clone = codec->CloneBase();
        RC_ASSERT(clone->GetProperty() == record);
        clone->SetProperty(Property(key));
        RC_ASSERT(codec->GetProperty() == record);
    }
}

} // namespace
} // namespace Zelnor::Conf
