#include "Tools/zconf/Console/VisibleJson.h"

#include "Tools/zconf/Console/ProgressJson.h"

#include "Core/Interfaces/JsonMemory.h"
#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Testing;
using namespace Zelnor::Tool;
using testing::HasSubstr;
using testing::Not;

/// C1's CSI with a colour, a right-to-left override, DEL, and a tag beyond 16 bits.
constexpr const char* kHostile = "a\xC2\x9B"
                                 "31mb\xE2\x80\xAE"
                                 "c\x7F\xF3\xA0\x80\x81";
constexpr const char* kEscaped = R"(a\u009B31mb\u202Ec\u007F\uDB40\uDC01)";

TEST(VisibleJson, EscapesWhatATerminalWouldObey)
{
    EXPECT_EQ(VisibleJson(std::string("{\"") + kHostile + "\":1}"), std::string("{\"") + kEscaped + "\":1}");
}

TEST(VisibleJson, MeansTheSame)
{
    Core::JsonDocument document;
    document.Parse(VisibleJson(std::string("\"") + kHostile + "\"").c_str());
    ASSERT_FALSE(document.HasParseError());
    EXPECT_EQ(std::string(document.GetString(), document.GetStringLength()), kHostile);
}

TEST(VisibleJson, LeavesAllElseAsItIs)
{
    for (const std::string json : {"{\n\t\"a\": \"\xC3\xA4 \xE6\x97\xA5 \xF0\x9F\x8E\xAC \\u001B\"\r\n}", "",
                                   "\"\xFF\xC2\"", "\"\xE2\x80\"", "\"\x9B\""})
    {
        EXPECT_EQ(VisibleJson(json), json);
    }
}

TEST(VisibleJson, IsWhatProgressIsToldIn)
{
    Media::RunProgress progress;
    progress.file = kHostile;
    EXPECT_THAT(ProgressJson(progress), HasSubstr(std::string("\"file\":\"") + kEscaped + "\""));
}

/// Jobs of which a tag was made by somebody else.
class HostileJob : public ZconfTest
{
protected:
    HostileJob()
    {
        Write("job.json", std::string(R"({"vertices":[{"id":1,"data":{"data":{"source":{")") + kHostile +
                              R"(":")" + kHostile + R"("}}}}],"edges":[]})");
    }
};

TEST_F(HostileJob, IsShownAsVisibleJson)
{
    const std::string output = Zconf({"job", "show", "--json", "job.json"}).output;
    EXPECT_THAT(output, HasSubstr(std::string("\"") + kEscaped + "\": \"" + kEscaped + "\""));
    EXPECT_THAT(output, Not(HasSubstr("\xC2\x9B")));
}

/// A preset with a tag that was made by somebody else.
class HostilePreset : public ZconfTest
{
protected:
    HostilePreset()
    {
        Write("preset.json", std::string(R"({"p":{"container":"wav","metadata":{"comment":")") + kHostile +
                                 R"("},"$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}})");
    }
};

TEST_F(HostilePreset, IsVisibleJsonOnATerminalAlone)
{
    ProcessOptions options;
    options.terminal = true;
    const std::string shown = Zconf({"preset", "new", "--preset", "./preset.json"}, options).output;
    EXPECT_THAT(shown, HasSubstr(kEscaped));
    EXPECT_THAT(shown, Not(HasSubstr("\xC2\x9B")));
    EXPECT_THAT(Zconf({"preset", "new", "--preset", "./preset.json"}).output, HasSubstr(kHostile));
}

} // namespace
