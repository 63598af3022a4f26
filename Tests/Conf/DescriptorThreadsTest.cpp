#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"

#include "Tests/Support/Campaign.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace Zelnor::Conf
{
namespace
{

using Testing::CampaignRuns;

constexpr int kThreads = 4;
/// Of a campaign's cheap operations, each round has about forty.
int Rounds() { return static_cast<int>(CampaignRuns(80'000) / 40); }

template <class Action>
void RunInThreads(Action action)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
    {
        threads.emplace_back(action);
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

TEST(DescriptorThreads, ReferencesAreCountedFromSeveralThreads)
{
    const std::vector<boost::intrusive_ptr<IFormat>> formats = {
        IFormatFile::Create(), IFormatCodec::Create(), IFormatCodecVideo::Create(),
        IFormatCodecAudio::Create(), IFormatCodecSubtitle::Create()};
    const int rounds = Rounds();
    RunInThreads([&formats, rounds] {
        for (int round = 0; round < rounds; ++round)
        {
            const std::vector<boost::intrusive_ptr<IFormat>> copies = formats;
        }
    });
    for (const auto& format : formats)
    {
        EXPECT_EQ(format->GetRefCount(), 1);
    }
}

TEST(DescriptorThreads, TheLastOfSeveralThreadsDeletesADescriptor)
{
    static std::atomic<int> destroyed{0};
    class Mortal : public IFormatCodec
    {
    public:
        Mortal() : IFormatCodec("mortal") {}
        ~Mortal() override { ++destroyed; }
    };
    const int rounds = std::max(Rounds() / 20, 1);
    for (int round = 0; round < rounds; ++round)
    {
        std::vector<boost::intrusive_ptr<IFormat>> holders(kThreads, new Mortal());
        std::atomic<int> next{0};
        RunInThreads([&] {
            auto& mine = holders[static_cast<std::size_t>(next++)];
            mine->GetProperty().Count();
            mine.reset();
        });
    }
    EXPECT_EQ(destroyed, rounds);
}

TEST(DescriptorThreads, TablesAreReadFromSeveralThreads)
{
    const int rounds = Rounds();
    RunInThreads([rounds] {
        for (int round = 0; round < rounds; ++round)
        {
            const auto audio = IFormatCodecAudio::Create();
            audio->SetChannelLayout(LayoutRecord::Find(round % 9)->layout);
            ASSERT_EQ(LayoutRecord::Find(audio->GetChannelLayout())->channels, round % 9);
            ASSERT_EQ(PixFmtDescription::Find("NV12")->GetPlanWidth(round, 0), round);
        }
    });
}

} // namespace
} // namespace Zelnor::Conf
