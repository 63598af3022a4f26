#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <thread>

namespace Zelnor::Testing
{

/// A call of the system that fails, whatever its state.
struct FailingCall
{
    long number; ///< `SYS_...`
    int error;   ///< of `errno`
    /// Which argument decides whether the call fails, and its lower 32 bits in a call that does; all fail
    /// without one.
    struct Argument
    {
        std::uint32_t index;
        std::uint32_t value;
    };
    std::optional<Argument> argument = std::nullopt;
};

/// Makes the call fail in this thread, and in what it starts, for as long as it lives.
/// \returns whether the system allows that
inline bool MakeFail(const FailingCall& call)
{
    constexpr std::uint16_t kLoad = BPF_LD | BPF_W | BPF_ABS;
    constexpr std::uint16_t kIfEqual = BPF_JMP | BPF_JEQ | BPF_K;
    constexpr std::uint16_t kReturn = BPF_RET | BPF_K;
    // Without a deciding argument, the number is compared a second time.
    const std::uint32_t offset =
        call.argument ? 16 + 8 * call.argument->index : 0; // of the argument in seccomp_data
    const auto number = static_cast<std::uint32_t>(call.number);
    std::array<sock_filter, 6> filter = {
        {{kLoad, 0, 0, 0},
         {kIfEqual, 0, 3, number},
         {kLoad, 0, 0, offset},
         {kIfEqual, 0, 1, call.argument ? call.argument->value : number},
         {kReturn, 0, 0, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(call.error)},
         {kReturn, 0, 0, SECCOMP_RET_ALLOW}}};
    const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// Runs `action` in a thread in which the call fails.
/// \returns whether the system allows that; without, `action` does not run
inline bool RunWhileFailing(const FailingCall& call, const std::function<void()>& action)
{
    bool allowed = false;
    std::thread([&] {
        allowed = MakeFail(call);
        if (allowed)
        {
            action();
        }
    }).join();
    return allowed;
}

} // namespace Zelnor::Testing
