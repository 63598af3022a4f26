#include "Core/Interfaces/CallStack.h"

#include "Core/Interfaces/Property.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/Plugin.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/mman.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace
{

std::atomic<unsigned> g_lookUps{0};

} // namespace

/// Stands before the system's own, and counts.
extern "C" [[gnu::visibility("default")]] int dladdr(const void* address, Dl_info* info) noexcept
{
    using Function = int (*)(const void*, Dl_info*);
    static const auto s_next = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "dladdr"));
    ++g_lookUps;
    return s_next(address, info);
}

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

#if defined(__x86_64__)

std::string g_stackBelowMadeCode;

void RememberStack() { g_stackBelowMadeCode = GetCallStack(); }

/// A function made at run time, as a compiler of scripts makes them: it calls `RememberStack`, and no library
/// knows its address.
class MadeCode
{
public:
    MadeCode() : m_page(::mmap(nullptr, kSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
    {
        // sub rsp, 8; mov rax, RememberStack; call rax; add rsp, 8; ret
        std::array<unsigned char, kSize> code = {0x48, 0x83, 0xEC, 0x08, 0x48, 0xB8, 0,    0,    0,    0,   0,
                                                 0,    0,    0,    0xFF, 0xD0, 0x48, 0x83, 0xC4, 0x08, 0xC3};
        void (*const called)() = &RememberStack;
        std::memcpy(code.data() + 6, &called, sizeof called);
        if (m_page != MAP_FAILED)
        {
            std::memcpy(m_page, code.data(), code.size());
            m_runs = ::mprotect(m_page, kSize, PROT_READ | PROT_EXEC) == 0;
        }
    }
    ~MadeCode() { ::munmap(m_page, kSize); }
    MadeCode(const MadeCode&) = delete;
    MadeCode& operator=(const MadeCode&) = delete;

    bool Runs() const { return m_runs; }
    void Call() const
    {
        void (*function)() = nullptr;
        std::memcpy(&function, &m_page, sizeof function);
        function();
    }
    /// Where the call in it returns to.
    std::uintptr_t ReturnAddress() const { return reinterpret_cast<std::uintptr_t>(m_page) + 16; }

private:
    static constexpr std::size_t kSize = 32;

    void* m_page;
    bool m_runs = false;
};

#endif

} // namespace

// Before the others, which unload libraries: names are remembered from the start.
TEST(CallStack, LooksUpTheNameOfAnAddressOnce)
{
    std::array<unsigned, 2> lookUps = {};
    for (unsigned& count : lookUps)
    {
        const unsigned before = g_lookUps;
        Recurse(3);
        count = g_lookUps - before;
    }
    EXPECT_GT(lookUps[0], 0u);
    EXPECT_EQ(lookUps[1], 0u);
}

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

#if defined(__x86_64__)

TEST(CallStack, GivesTheAddressWhereNoLibraryIsKnown)
{
    const MadeCode code;
    if (!code.Runs())
    {
        GTEST_SKIP() << "this process may not run what it writes";
    }
    code.Call();
    std::ostringstream address;
    address << "0x" << std::hex << code.ReturnAddress();
    const std::vector<std::string> frames = FramesOf(g_stackBelowMadeCode);
    ASSERT_GT(frames.size(), 1u);
    EXPECT_EQ(frames[1], address.str()) << g_stackBelowMadeCode;
}

#endif

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
