#include "Conf/Interfaces/IFormat.h"

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Core/Interfaces/PrintPropertyValue.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/VirtualSlot.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>

namespace Zelnor::Conf
{
namespace
{

using Core::Property;
using Testing::ExpectThrow;
using Testing::Thrown;
using Testing::VirtualSlot;

static_assert(std::is_abstract_v<IFormat>);
static_assert(std::has_virtual_destructor_v<IFormat>);
static_assert(!std::is_assignable_v<IFormat&, const IFormat&>, "a file must not be assigned to a codec");

TEST(IFormat, VirtualFunctionsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&IFormat::AddRef), 2u);
    EXPECT_EQ(VirtualSlot(&IFormat::GetRefCount), 3u);
    EXPECT_EQ(VirtualSlot(&IFormat::Release), 4u);
    EXPECT_EQ(VirtualSlot(&IFormat::GetProperty), 5u);
    EXPECT_EQ(VirtualSlot(&IFormat::SetProperty), 6u);
}

TEST(IFormat, SettingAChildlessGroupAddsAnEmptyMetadata)
{
    const auto file = IFormatFile::Create();
    file->SetProperty(Property("fresh"));
    Property expected("fresh");
    expected.SetChild("metadata");
    EXPECT_EQ(file->GetProperty(), expected);
}

TEST(IFormat, SettingAPropertyWithMetadataKeepsItAsItIs)
{
    Property record("fresh");
    record.SetChild("metadata").SetChildT("title", std::string("A film"));
    record.SetChildT("container", std::string("mp4"));
    const auto file = IFormatFile::Create();
    file->SetProperty(record);
    EXPECT_EQ(file->GetProperty(), record);
}

TEST(IFormat, SettingAScalarIsRefusedAndChangesNothing)
{
    const auto file = IFormatFile::Create();
    const Property before = file->GetProperty();
    const Thrown thrown =
        ExpectThrow<Core::MethodIsNotApplicable>([&] { file->SetProperty(Property("five", 5LL)); });
    EXPECT_EQ(thrown.Get<Core::PropertyException::TagPropertyName>(), "five");
    EXPECT_EQ(thrown.Get<Core::PropertyException::TagMethodName>(), "SetChild");
    EXPECT_EQ(thrown.Get<Core::PropertyException::TagPropertyType>(), PROPERTY_TYPE_INT64);
    EXPECT_EQ(file->GetProperty(), before);
}

TEST(IFormat, APropertyMayBeSetFromItsOwnChild)
{
    const auto file = IFormatFile::Create();
    file->SetProperty(file->GetProperty()["metadata"]);
    Property expected("metadata");
    expected.SetChild("metadata");
    EXPECT_EQ(file->GetProperty(), expected);
}

TEST(IFormat, MetadataIsSetUnderItsKeyWhateverTheNameOfTheValue)
{
    Property tags("tags");
    tags.SetChildT("title", std::string("A film"));
    const auto file = IFormatFile::Create();
    file->SetMetadata(tags);
    EXPECT_EQ(file->GetMetadata().GetName(), "metadata");
    EXPECT_EQ(file->GetMetadata()["title"].GetString(), "A film");
    EXPECT_EQ(file->GetProperty().Count(), 1u);
    EXPECT_EQ(&file->GetMetadata(), &file->GetProperty()["metadata"]);
}

TEST(IFormat, MetadataMayBeSetFromItself)
{
    const auto file = IFormatFile::Create();
    Property tags("metadata");
    tags.SetChild("inner").SetChildT("title", std::string("A film"));
    file->SetMetadata(tags);
    file->SetMetadata(file->GetMetadata()["inner"]);
    EXPECT_EQ(file->GetMetadata()["title"].GetString(), "A film");
    EXPECT_EQ(file->GetMetadata().Count(), 1u);
}

TEST(IFormat, DescriptorsCompareByTheirRecordsAlone)
{
    const auto one = IFormatFile::Create();
    const auto other = IFormatFile::Create();
    one->GetInternalProperties().put("runtime", "yes");
    EXPECT_TRUE(one->Compare(other));
    other->SetMetadata(Property("metadata", 5LL));
    EXPECT_FALSE(one->Compare(other));
}

TEST(IFormat, ADescriptorOfAnotherClassIsEqualWhenItsRecordIs)
{
    const auto file = IFormatFile::Create();
    const auto codec = IFormatCodec::Create();
    EXPECT_FALSE(file->Compare(codec));
    codec->SetProperty(file->GetProperty());
    EXPECT_TRUE(file->Compare(codec));
}

TEST(IFormat, NothingEqualsANullPointer) { EXPECT_FALSE(IFormatFile::Create()->Compare(nullptr)); }

TEST(IFormat, InternalPropertiesAreHandedOutByReference)
{
    const auto file = IFormatFile::Create();
    file->GetInternalProperties().put("runtime", "yes");
    const IFormatFile& unchanged = *file;
    EXPECT_EQ(unchanged.GetInternalProperties().get<std::string>("runtime"), "yes");
    EXPECT_EQ(&unchanged.GetInternalProperties(), &file->GetInternalProperties());
}

TEST(IFormat, ADotInAnObjectNameMakesNoPath)
{
    class Dotted : public IFormatCodec
    {
    public:
        Dotted() : IFormatCodec("a.b") {}
    };
    const boost::intrusive_ptr<Dotted> codec = new Dotted();
    EXPECT_EQ(codec->GetProperty().GetName(), "a.b");
    ASSERT_EQ(codec->GetInternalProperties().size(), 1u);
    EXPECT_EQ(codec->GetInternalProperties().front().first, "object_name");
    EXPECT_EQ(codec->GetInternalProperties().front().second.data(), "a.b");
}

TEST(IFormat, ThePrintOfAFreshDescriptorEndsWithItsObjectName)
{
    std::ostringstream record;
    const auto file = IFormatFile::Create();
    Core::PrintPropertyValue(file->GetProperty(), 0, record, true, true);
    std::ostringstream os;
    file->PrintContent(os);
    EXPECT_EQ(os.str(), "======External props:=====\n" + record.str() +
                            "======Runtime props:=======\n"
                            "object_name: format_file\n");
    EXPECT_NE(record.str().find("format_file"), std::string::npos);
}

TEST(IFormat, ThePrintShowsTheFirstLevelOfTheInternalPropertiesInTheirOrder)
{
    const auto file = IFormatFile::Create();
    file->GetInternalProperties().put("runtime.ffmpeg", "inner");
    file->GetInternalProperties().put("a", "last");
    std::ostringstream os;
    file->PrintContent(os);
    const std::string text = os.str();
    EXPECT_EQ(text.substr(text.find("======Runtime")), "======Runtime props:=======\n"
                                                       "object_name: format_file\n"
                                                       "runtime: \n"
                                                       "a: last\n");
}

TEST(IFormat, ThePrintIsFlushedAfterEachLine)
{
    class Counter : public std::stringbuf
    {
    public:
        int flushes = 0;

    protected:
        int sync() override
        {
            ++flushes;
            EXPECT_EQ(str().back(), '\n');
            return std::stringbuf::sync();
        }
    } counter;
    std::ostream os(&counter);
    IFormatFile::Create()->PrintContent(os);
    EXPECT_GE(counter.flushes, 4);
}

} // namespace
} // namespace Zelnor::Conf
