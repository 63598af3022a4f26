#include "Media/Options/OptionTables.h"

#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <set>
#include <sstream>
#include <string>

namespace
{

using namespace Zelnor::Media;
using namespace Zelnor::Testing;

/// The options of the program ffmpeg itself, as it lists them.
std::set<std::string> OptionsOfTheProgram()
{
    std::istringstream help(RunProcess({"ffmpeg", "-hide_banner", "-h", "full"}).output);
    std::set<std::string> names;
    for (std::string line; std::getline(help, line) && line.find("AVOptions:") == std::string::npos;)
    {
        if (line.size() > 1 && line[0] == '-')
        {
            names.insert(line.substr(1, line.find_first_of(" <[", 1) - 1));
        }
    }
    return names;
}

/// Every option of every codec.
std::set<std::string> OptionsOfCodecs()
{
    std::set<std::string> names;
    const auto add = [&names](const AVClass* owner) {
        const AVOption* option = nullptr;
        while (owner != nullptr && (option = av_opt_next(&owner, option)) != nullptr)
        {
            if (option->type != AV_OPT_TYPE_CONST)
            {
                names.insert(option->name);
            }
        }
    };
    add(avcodec_get_class());
    void* position = nullptr;
    while (const AVCodec* const codec = av_codec_iterate(&position))
    {
        add(codec->priv_class);
    }
    return names;
}

TEST(OptionTables, HoldNoOptionOfTheProgram)
{
    const std::set<std::string> program = OptionsOfTheProgram();
    ASSERT_GT(program.size(), 100U);
    for (const std::string& name : program)
    {
        EXPECT_FALSE(IsAllowedForDecoders(name)) << name;
        // Hands its value to the encoder.
        EXPECT_EQ(IsAllowedForEncoders(name), name == "profile") << name;
        EXPECT_EQ(FindTextRule("libx264", name) != nullptr, name == "profile") << name;
        EXPECT_EQ(FindParametersRule("libx264", name), nullptr) << name;
    }
}

TEST(OptionTables, HoldMostOptionsOfTheInstalledCodecs)
{
    const std::set<std::string> codecs = OptionsOfCodecs();
    std::size_t allowed = 0;
    for (const std::string& name : codecs)
    {
        allowed += IsAllowedForEncoders(name) || IsAllowedForDecoders(name) ? 1 : 0;
    }
    EXPECT_GT(allowed, codecs.size() * 3 / 4) << "of " << codecs.size();
}

TEST(OptionTables, HoldWholeNamesOnly)
{
    for (const std::string name : {"", " ", "g ", " g", "g bf", "bf g", "qmin qmax", "rc", "cr"})
    {
        EXPECT_EQ(IsAllowedForEncoders(name), name == "rc") << name;
        EXPECT_FALSE(IsAllowedForDecoders(name)) << name;
        EXPECT_FALSE(IsAllowedFlag("flags", name)) << name;
    }
}

TEST(OptionTables, HoldTheFlagsThatWriteNothing)
{
    EXPECT_TRUE(IsAllowedFlag("flags", "mv4"));
    EXPECT_FALSE(IsAllowedFlag("flags", "pass1"));
    EXPECT_FALSE(IsAllowedFlag("flags", "pass2"));
    EXPECT_FALSE(IsAllowedFlag("flags2", "pass1"));
    EXPECT_TRUE(IsAllowedFlag("mpv_flags", "skip_rd"));
}

TEST(OptionTables, TellEncodersByTheBeginningOfTheirNames)
{
    EXPECT_NE(FindTextRule("libx264", "preset"), nullptr);
    EXPECT_NE(FindTextRule("libx264rgb", "preset"), nullptr);
    EXPECT_EQ(FindTextRule("mpeg4", "preset"), nullptr);
    EXPECT_EQ(FindTextRule("libx264", "passlogfile"), nullptr);
    EXPECT_NE(FindParametersRule("libx264rgb", "x264opts"), nullptr);
    EXPECT_EQ(FindParametersRule("libx265", "x264opts"), nullptr);
}

} // namespace
