#include "Core/Interfaces/CallStack.h"

#include "Core/Interfaces/Property.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/Plugin.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace Zelnor
{

namespace
{

using Testing::Plugin;

std::vector<std::string> FramesOf(const std::string& stack)
{
    std::vector<std::string> frames;
    std::istringstream lines(stack);
    for (std::string line; std::getline(lines, line);)
    {
        frames.push_back(line);
    }
    return frames;
}

/// Whether the frame is "<function> + 0x<offset> (<library>)".
void ExpectFrame(const std::string& frame, const std::string& function, const std::string& library)
{
    EXPECT_EQ(frame.find(function + " + 0x"), 0u) << frame;
    EXPECT_NE(frame.find(" (" + library), std::string::npos) << frame;
}

// A frame of its own in the stack, and not the one behind which the call to the next function vanishes.
[[gnu::noinline]] std::string Recurse(int depth)
{
    std::string stack = depth == 0 ? GetCallStack() : Recurse(depth - 1);
    asm volatile("" : : "r"(&stack) : "memory");
    return stack;
}

} // namespace

TEST(CallStack, HasOneFrameALine)
{
    const std::string stack = GetCallStack();
    ASSERT_FALSE(stack.empty());
    EXPECT_EQ(stack.back(), '\n');
    const std::vector<std::string> frames = FramesOf(stack);
    EXPECT_GT(frames.size(), 3u);
    for (const std::string& frame : frames)
    {
        EXPECT_NE(frame.find("0x"), std::string::npos) << frame;
    }
}

TEST(CallStack, BeginsWithTheCallerAndNamesExportedFunctions)
{
    const Plugin plugin(ZELNOR_PLUGIN_FIRST);
    const std::vector<std::string> frames = FramesOf(plugin.Stack());
    ASSERT_GT(frames.size(), 2u);
    ExpectFrame(frames[0], "First::StackOfPlugin[abi:cxx11]()", "libZelnorPluginFirst.so)");
    ExpectFrame(frames[1], "ZelnorPluginStack", "libZelnorPluginFirst.so)");
}

TEST(CallStack, GivesLibraryAndOffsetWhereNoNameIsKnown)
{
    EXPECT_EQ(GetCallStack().find("ZelnorCoreTests + 0x"), 0u);
}

TEST(CallStack, NamesTheFunctionWhoseLastInstructionIsTheCall)
{
    const Plugin plugin(ZELNOR_PLUGIN_FIRST);
    const std::vector<std::string> frames = FramesOf(plugin.StackOfThrow());
    ASSERT_GT(frames.size(), 2u);
    ExpectFrame(frames[0], "First::ThrowStack()", "libZelnorPluginFirst.so)");
    ExpectFrame(frames[1], "ZelnorPluginThrow", "libZelnorPluginFirst.so)");
}

TEST(CallStack, NamesTheFunctionThatThrows)
{
    const Core::Property number("p", 1);
    const auto thrown = Testing::ExpectThrow<Core::PropertyException>([&] { number.GetRatio(); });
    EXPECT_NE(thrown.callStack.value_or("").find("Zelnor::Core::Property::GetRatio() const &"),
              std::string::npos)
        << thrown.callStack.value_or("");
}

TEST(CallStack, ForgetsTheNamesOfAnUnloadedLibrary)
{
    const void* address = nullptr;
    {
        const Plugin plugin(ZELNOR_PLUGIN_FIRST);
        address = plugin.Address();
        EXPECT_NE(plugin.Stack().find("First::StackOfPlugin"), std::string::npos);
    }
    ASSERT_EQ(::dlopen(ZELNOR_PLUGIN_FIRST, RTLD_NOW | RTLD_NOLOAD), nullptr) << "it was unloaded";
    const Plugin plugin(ZELNOR_PLUGIN_SECOND);
    const std::string stack = plugin.Stack();
    EXPECT_NE(stack.find("Second::StackOfPlugin"), std::string::npos) << stack;
    EXPECT_EQ(stack.find("First::"), std::string::npos) << stack;
    if (address != plugin.Address())
    {
        GTEST_SKIP() << "the system loaded the second library somewhere else";
    }
}

TEST(CallStack, IsTheCallingThreads)
{
    std::string stack;
    std::thread([&] { stack = GetCallStack(); }).join();
    EXPECT_FALSE(stack.empty());
    EXPECT_EQ(stack.find("main"), std::string::npos);
}

TEST(CallStack, OfADeepRecursionIsCutOff)
{
    const std::string stack = Recurse(10000);
    EXPECT_EQ(FramesOf(stack).size(), 63u);
    EXPECT_EQ(stack.substr(stack.find('\n')), Recurse(10000).substr(stack.find('\n')));
}

} // namespace Zelnor
