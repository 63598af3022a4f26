#pragma once

// Private to the library, not installed.

#include <atomic>
#include <exception>
#include <functional>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace Zelnor::Media
{

/// Calls `step` again and again in so many threads, of which the calling one is one, until it returns false
/// in each. After the first exception no thread begins another step, and when all have ended it is thrown. A
/// system that has fewer threads or less memory left gives fewer.
inline void RunWorkers(unsigned int count, const std::function<bool()>& step)
{
    std::atomic<bool> hasFailed{false};
    std::exception_ptr failure;
    const auto work = [&]() noexcept {
        try
        {
            while (!hasFailed && step())
            {}
        }
        catch (...)
        {
            if (!hasFailed.exchange(true))
            {
                failure = std::current_exception();
            }
        }
    };
    std::vector<std::thread> threads;
    threads.reserve(count);
    try
    {
        while (threads.size() + 1 < count)
        {
            threads.emplace_back(work);
        }
    }
    catch (const std::system_error&)
    {}
    catch (const std::bad_alloc&)
    {}
    work();
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    if (failure != nullptr)
    {
        std::rethrow_exception(failure);
    }
}

} // namespace Zelnor::Media
