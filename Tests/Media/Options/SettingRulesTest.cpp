#include "Media/Options/SettingRules.h"

#include "Tests/Support/CollidingNames.h"
#include "Tests/Support/JobFixtures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Core::Property;

std::string FaultOf(const std::string& setting) { return FindSettingFault(*VideoRecord(setting).begin()); }

std::vector<std::string> ChildFaultsOf(const Property& group)
{
    std::vector<std::string> faults;
    for (const ChildFault& fault : FindChildFaults(group))
    {
        faults.push_back(fault.child->GetName() + ": " + fault.reason);
    }
    return faults;
}

TEST(SettingRules, OfATagAskForFourCharactersOrThirtyTwoBits)
{
    const std::string expected =
        "expected four printable characters or an integer from 0 to 4294967295, found ";
    for (const std::string tag : {R"("avc1")", R"("raw ")", "0", "4294967295"})
    {
        EXPECT_EQ(FaultOf(R"("codec_fourcc":)" + tag), "") << tag;
    }
    EXPECT_EQ(FaultOf(R"("codec_fourcc":"a")"), expected + "'a'");
    EXPECT_EQ(FaultOf(R"("codec_fourcc":"")"), expected + "''");
    EXPECT_EQ(FaultOf(R"("codec_fourcc":"avc12")"), expected + "'avc12'");
    EXPECT_EQ(FaultOf(R"("codec_fourcc":"av\n1")"), expected + "'av\n1'");
    EXPECT_EQ(FaultOf("\"codec_fourcc\":\"av~1\""), "");
    EXPECT_EQ(FaultOf("\"codec_fourcc\":\"av\x7F"
                      "1\""),
              expected + "'av\x7F"
                         "1'");
    EXPECT_EQ(FaultOf(R"("codec_fourcc":-1)"), expected + "-1");
    EXPECT_EQ(FaultOf(R"("codec_fourcc":4294967296)"), expected + "4294967296");
}

TEST(SettingRules, OfTheDisplayAspectRatioAskForThirtyTwoBits)
{
    const std::string expected = "expected an integer from 0 to 4294967295, found ";
    EXPECT_EQ(FaultOf(R"("frame_aspect_x":16)"), "");
    EXPECT_EQ(FaultOf(R"("frame_aspect_x":-1)"), expected + "-1");
    EXPECT_EQ(FaultOf(R"("frame_aspect_y":4294967296)"), expected + "4294967296");
}

TEST(SettingRules, KnowTheirKeys)
{
    EXPECT_TRUE(IsSettingKnown("bitrate"));
    EXPECT_FALSE(IsSettingKnown("odd"));
    EXPECT_EQ(FaultOf(R"("odd":1)"), "");
    EXPECT_TRUE(IsSettingForCopies("language"));
    EXPECT_TRUE(IsSettingForCopies("metadata"));
    EXPECT_TRUE(IsSettingForCopies("codec.options.analyze"));
    EXPECT_FALSE(IsSettingForCopies("codec.options.encode"));
    EXPECT_FALSE(IsSettingForCopies("bitrate"));
    EXPECT_FALSE(IsSettingForCopies("odd"));
}

TEST(SettingRules, OfTagsAskForNamesThatFFmpegTakesAsTheyAre)
{
    const std::string reason = ": the name of a tag is a visible text without '='";
    for (const std::string name : {"", "a=b", "=", "a\nb", "\x1b[31m", "\xff", "a\xe2\x80\xae"})
    {
        Property metadata("metadata");
        metadata.Add(Property(name, std::string("x")));
        EXPECT_EQ(ChildFaultsOf(metadata), std::vector<std::string>{name + reason});
    }
    Property metadata("metadata");
    for (const std::string name : {"title", "com.example.tag", "\xc2\xa9nam", "-f", "a b"})
    {
        metadata.Add(Property(name, std::string("any = text\n")));
    }
    EXPECT_EQ(ChildFaultsOf(metadata), std::vector<std::string>());
}

TEST(SettingRules, OfGroupsAreAskedInMomentsWhateverTheNamesAre)
{
    constexpr unsigned int kChoices = 16;
    Property group("codec.options.encode");
    for (const std::string& name : CollidingNames::Make(kChoices))
    {
        group.Add(Property(name, 1LL));
    }
    EXPECT_TRUE(FindChildFaults(group).empty());
}

TEST(SettingRules, OfGroupsDoNotLetANameAppearTwice)
{
    Property metadata("metadata");
    metadata.Add(Property("title", std::string("a")));
    metadata.Add(Property("Title", std::string("b")));
    EXPECT_EQ(ChildFaultsOf(metadata), std::vector<std::string>{"Title: appears more than once"});
    Property options("codec.options.encode");
    options.Add(Property("g", 1LL));
    options.Add(Property("g", 2LL));
    EXPECT_EQ(ChildFaultsOf(options), std::vector<std::string>{"g: appears more than once"});
}

} // namespace
