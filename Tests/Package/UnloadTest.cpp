// Not linked with our libraries: they come with the module, and shall go with it.

#include "Tests/Support/Campaign.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace
{

bool IsLoaded(const std::string& library)
{
    void* const handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr)
    {
        dlclose(handle);
    }
    return handle != nullptr;
}

/// Modules of users, who optimise or not.
class Libraries : public testing::TestWithParam<const char*>
{
public:
    static void LoadUseAndUnload();
};

void Libraries::LoadUseAndUnload()
{
    void* const module = dlopen(GetParam(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    EXPECT_TRUE(IsLoaded(ZELNOR_CORE_LIBRARY));
    EXPECT_TRUE(IsLoaded(ZELNOR_CONF_LIBRARY));
    const auto use = reinterpret_cast<bool (*)()>(dlsym(module, "UseTheLibraries"));
    ASSERT_NE(use, nullptr);
    EXPECT_TRUE(use());

    EXPECT_EQ(dlclose(module), 0);

    EXPECT_FALSE(IsLoaded(GetParam()));
    EXPECT_FALSE(IsLoaded(ZELNOR_CONF_LIBRARY));
    EXPECT_FALSE(IsLoaded(ZELNOR_CORE_LIBRARY));
}

TEST_P(Libraries, LeaveMemoryTogetherWithTheirLog)
{
#ifdef ZELNOR_ADDRESS_SANITIZER
    GTEST_SKIP() << "glog loses the memory of its flags when it is unloaded";
#endif
    LoadUseAndUnload();
    LoadUseAndUnload();
}

/// Without glog there is nothing that could stay.
void KeepTheLog()
{
#ifdef ZELNOR_GLOG_LIBRARY
    ASSERT_NE(dlopen(ZELNOR_GLOG_LIBRARY, RTLD_NOW | RTLD_LOCAL), nullptr) << dlerror();
#endif
}

TEST_P(Libraries, LeaveMemoryWhenTheirLogStays)
{
    KeepTheLog();
    LoadUseAndUnload();
    LoadUseAndUnload();
}

TEST(TwoMajorVersions, AreLoadedForEverybodyAndEndWithTheProcess)
{
    const auto useBoth = [] {
        for (const char* const name : {ZELNOR_MODULE, ZELNOR_NEXT_MODULE})
        {
            void* const module = dlopen(name, RTLD_NOW | RTLD_GLOBAL);
            const auto use =
                reinterpret_cast<bool (*)()>(module == nullptr ? nullptr : dlsym(module, "UseTheLibraries"));
            if (use == nullptr || !use())
            {
                std::exit(1);
            }
        }
        std::exit(IsLoaded(ZELNOR_CONF_LIBRARY) && IsLoaded(ZELNOR_NEXT_CONF_LIBRARY) ? 0 : 2);
    };
    EXPECT_EXIT(useBoth(), testing::ExitedWithCode(0), "");
}

/// Lines of a file of /proc/self that contain a text.
std::vector<std::string> LinesOf(const char* file, const std::string& text)
{
    std::ifstream lines(std::string("/proc/self/") + file);
    std::vector<std::string> found;
    for (std::string line; std::getline(lines, line);)
    {
        if (line.find(text) != std::string::npos)
        {
            found.push_back(line);
        }
    }
    return found;
}

long ResidentKilobytes()
{
    const std::vector<std::string> lines = LinesOf("status", "VmRSS:");
    return lines.empty() ? 0 : std::stol(lines.front().substr(std::string("VmRSS:").size()));
}

TEST_P(Libraries, ComeAndGoWithoutTakingMoreMemoryEachTime)
{
#ifdef ZELNOR_ADDRESS_SANITIZER
    GTEST_SKIP() << "the sanitizer keeps what was freed";
#endif
    KeepTheLog();
    const std::size_t times = Zelnor::Testing::CampaignRuns(20);
    for (int warmUp = 0; warmUp < 10; ++warmUp)
    {
        LoadUseAndUnload();
    }
    const std::size_t mappings = LinesOf("maps", "").size();
    const long kilobytes = ResidentKilobytes();
    for (std::size_t i = 0; i < times && !HasFailure(); ++i)
    {
        LoadUseAndUnload();
    }
    // The heap may grow by one mapping; a library that stayed would have five.
    EXPECT_LE(LinesOf("maps", "").size(), mappings + 2);
    EXPECT_TRUE(LinesOf("maps", "libZelnor").empty());
    // What each round may lose, if it loses anything, is less than a page of four kilobytes in eight of them.
    const long grown = ResidentKilobytes() - kilobytes;
    EXPECT_LE(grown, 256 + static_cast<long>(times) / 2);
    Zelnor::Testing::ReportFigures(std::to_string(times) + " times loaded and unloaded, " +
                                   std::to_string(grown) + " KiB grown");
}

INSTANTIATE_TEST_SUITE_P(Modules, Libraries, testing::Values(ZELNOR_MODULE, ZELNOR_UNOPTIMISED_MODULE),
                         [](const auto& module) { return module.index == 0 ? "Optimised" : "NotOptimised"; });

} // namespace
