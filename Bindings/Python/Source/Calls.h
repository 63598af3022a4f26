// Private to the Python package.
#pragma once

#include "Media/Running/JobRun.h"

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>

namespace Zelnor::Python
{

/// Does long work in a thread of its own, while the thread that asked for it waits without the interpreter's
/// lock, calls back into Python for the work, and notices Ctrl+C: only the main thread may run Python's
/// signal handlers.
class Calls
{
public:
    /// \param cancel  stops the work when Python raises something
    explicit Calls(Media::CancelToken cancel) : m_cancel(std::move(cancel)) {}

    /// Returns when `work` has ended. Throws what a call back or a signal handler raised, else what `work`
    /// threw. The calling thread has the interpreter's lock.
    void Run(const std::function<void()>& work);

    /// For the work: has `call` called with the interpreter's lock, and returns when that is done. After
    /// something was raised, nothing is called any more.
    void CallBack(const std::function<void()>& call);

private:
    void Work(const std::function<void()>& work) noexcept;
    void Wait();
    void CallWithLock(const std::function<void()>* call) noexcept;

    Media::CancelToken m_cancel;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    const std::function<void()>* m_call = nullptr;
    bool m_isDone = false;
    std::exception_ptr m_raised; ///< by Python
    std::exception_ptr m_thrown; ///< by the work
};

} // namespace Zelnor::Python
