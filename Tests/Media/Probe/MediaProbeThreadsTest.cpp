#include "Media/MediaException.h"
#include "Media/Probe/FFmpegLog.h"
#include "Media/Probe/MediaProbe.h"

#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;

TEST(MediaProbeThreads, EachFailureHasTheMessageOfItsOwnThread)
{
    const TemporaryFolder folder;
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-c:v", "mpeg4", "v.mp4"},
             folder.Path().string());
    WriteFile(folder / "cut.mp4", ReadFile(folder / "v.mp4").substr(0, 600));
    KeepFFmpegMessages();
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
    {
        threads.emplace_back([&folder, fails = i % 2 == 0] {
            for (int round = 0; round < 20; ++round)
            {
                if (!fails)
                {
                    EXPECT_EQ(ProbeMedia(folder / "v.mp4").streams.size(), 1U);
                    continue;
                }
                const Thrown cut = ExpectThrow<ProbeException>([&] { ProbeMedia(folder / "cut.mp4"); });
                EXPECT_EQ(cut.description, (folder / "cut.mp4").string() +
                                               ": cannot be read: Invalid data found when processing input "
                                               "(moov atom not found)");
                const Thrown none = ExpectThrow<ProbeException>(
                    [] { ProbeMedia(*Core::MemoryDataInput::Create("none"), "none"); });
                EXPECT_EQ(none.description, "none: cannot be read: Invalid data found when processing input");
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

} // namespace
