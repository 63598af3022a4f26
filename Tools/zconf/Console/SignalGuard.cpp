#include "Tools/zconf/Console/SignalGuard.h"

#include <array>
#include <csignal>
#include <cstdlib>

namespace Zelnor::Tool
{

namespace
{

constexpr std::array<int, 3> kSignals = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t g_caught = 0;
std::array<struct sigaction, kSignals.size()> g_former;

const Media::CancelToken* g_cancel = nullptr;

void Catch(int signal)
{
    g_caught = signal;
    g_cancel->Cancel();
}

} // namespace

SignalGuard::SignalGuard(const Media::CancelToken& cancel)
{
    g_caught = 0;
    g_cancel = &cancel;
    struct sigaction action = {};
    action.sa_handler = Catch;
    for (std::size_t i = 0; i < kSignals.size(); ++i)
    {
        ::sigaction(kSignals[i], nullptr, &g_former[i]);
        // What is ignored, as under nohup, stays so.
        if (g_former[i].sa_handler != SIG_IGN)
        {
            ::sigaction(kSignals[i], &action, nullptr);
        }
    }
}

SignalGuard::~SignalGuard()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i)
    {
        ::sigaction(kSignals[i], &g_former[i], nullptr);
    }
}

int SignalGuard::Caught() { return g_caught; }

void EndBy(int signal)
{
    (void)::signal(signal, SIG_DFL);
    (void)::raise(signal);
    // Only when the signal is blocked.
    constexpr int kSignalledExitBase = 128;
    std::_Exit(kSignalledExitBase + signal);
}

} // namespace Zelnor::Tool
