#include "Tests/Support/ZconfTest.h"

#include <gmock/gmock.h>

namespace
{

using namespace Zelnor::Testing;
using testing::HasSubstr;
using testing::Not;

class Terminal : public ZconfTest
{
protected:
    Terminal() { Write("job.json", kValid); }

    std::string OnTerminal(const std::vector<std::string>& arguments,
                           std::vector<std::string> environment) const
    {
        ProcessOptions options;
        options.terminal = true;
        options.environment = std::move(environment);
        return Zconf(arguments, options).output;
    }
};

/// Begins every sequence that steers a terminal. What the commands print besides is tested with each command.
constexpr const char* kEscape = "\x1b[";

TEST_F(Terminal, HasColour)
{
    // One coloured piece of each kind of output; Painter colours the others alike.
    const std::string shown = OnTerminal({"job", "show", "job.json"}, {"TERM=xterm", "NO_COLOR"});
    EXPECT_THAT(shown, HasSubstr("\x1b[1mNode \x1b[0m\x1b[1;33m1\x1b[0m"));
    EXPECT_THAT(OnTerminal({"job", "check", "--topology", "job.json"}, {"TERM=xterm", "NO_COLOR"}),
                HasSubstr("\x1b[32mvalid\x1b[0m"));
    EXPECT_THAT(OnTerminal({"job", "check", "gone"}, {"TERM=xterm", "NO_COLOR"}),
                HasSubstr("\x1b[1;31mzconf:\x1b[0m "));
}

TEST_F(Terminal, AnEmptyNoColorDoesNotCount)
{
    EXPECT_THAT(OnTerminal({"job", "show", "job.json"}, {"TERM=xterm", "NO_COLOR="}), HasSubstr(kEscape));
}

TEST_F(Terminal, HasNoColourWhereItIsNotWanted)
{
    for (const std::vector<std::string>& environment : {std::vector<std::string>{"TERM=xterm", "NO_COLOR=1"},
                                                        {"TERM=xterm", "NO_COLOR=0"},
                                                        {"TERM=dumb", "NO_COLOR"},
                                                        {"TERM", "NO_COLOR"}})
    {
        for (const char* const command : {"show", "check"})
        {
            const std::string output = OnTerminal({"job", command, "job.json"}, environment);
            EXPECT_THAT(output, HasSubstr("job.json"));
            EXPECT_THAT(output, Not(HasSubstr(kEscape)));
        }
    }
}

TEST_F(Terminal, DocumentsAreNeverColoured)
{
    EXPECT_THAT(OnTerminal({"job", "show", "job.json", "--json"}, {"TERM=xterm", "NO_COLOR"}),
                Not(HasSubstr(kEscape)));
    EXPECT_THAT(OnTerminal({"job", "draw", "job.json"}, {"TERM=xterm", "NO_COLOR"}), Not(HasSubstr(kEscape)));
}

TEST_F(Terminal, WithoutATerminalThereIsNoColour)
{
    ProcessOptions options;
    options.environment = {"TERM=xterm", "NO_COLOR"};
    EXPECT_THAT(Zconf({"job", "show", "job.json"}, options).output, Not(HasSubstr(kEscape)));
    EXPECT_THAT(Zconf({"job", "show", "gone"}, options).messages, Not(HasSubstr(kEscape)));
}

TEST_F(Terminal, TheLocaleChangesNothing)
{
    Write("job.json", R"({"vertices":[{"id":1234567,"data":{"data":{"bitrate":12345678}}},{"id":2}],)"
                      R"("edges":[{"from":1234567,"to":2}]})");
    ProcessOptions classic;
    classic.environment = {"LC_ALL=C"};
    for (const std::vector<std::string>& command : {std::vector<std::string>{"job", "show", "job.json"},
                                                    {"job", "check", "--topology", "job.json"},
                                                    {"job", "draw", "job.json"}})
    {
        const std::string expected = Zconf(command, classic).output;
        for (const char* const locale : {"LC_ALL=de_DE.UTF-8", "LC_ALL=tr_TR.UTF-8", "LC_ALL=no_such_locale"})
        {
            ProcessOptions other;
            other.environment = {locale};
            const ProcessResult result = Zconf(command, other);
            ExpectQuietSuccess(result);
            EXPECT_EQ(result.output, expected);
        }
    }
}

} // namespace
