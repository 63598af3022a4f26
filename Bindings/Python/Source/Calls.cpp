#include "Bindings/Python/Source/Calls.h"
#include "Bindings/Python/Source/Classes.h"

#include <chrono>
#include <thread>

namespace Zelnor::Python
{

namespace
{

/// How long Ctrl+C may wait.
constexpr std::chrono::milliseconds kPeriod{50};

} // namespace

void Calls::Run(const std::function<void()>& work)
{
    {
        const WithoutLock withoutLock;
        std::thread worker([this, &work] { Work(work); });
        Wait();
        worker.join();
    }
    if (m_raised)
    {
        std::rethrow_exception(m_raised);
    }
    if (m_thrown)
    {
        // A terminal's Ctrl+C reaches ffmpeg, too, whose end may be seen before the signal is.
        if (PyErr_CheckSignals() != 0)
        {
            throw py::error_already_set();
        }
        std::rethrow_exception(m_thrown);
    }
}

void Calls::Work(const std::function<void()>& work) noexcept
{
    try
    {
        work();
    }
    catch (...)
    {
        m_thrown = std::current_exception();
    }
    const std::lock_guard lock(m_mutex);
    m_isDone = true;
    m_changed.notify_all();
}

void Calls::Wait()
{
    std::unique_lock lock(m_mutex);
    while (!m_isDone)
    {
        m_changed.wait_for(lock, kPeriod, [this] { return m_isDone || m_call != nullptr; });
        if (m_isDone)
        {
            break;
        }
        const std::function<void()>* const call = m_call;
        lock.unlock();
        CallWithLock(call);
        lock.lock();
        if (call != nullptr)
        {
            m_call = nullptr;
            m_changed.notify_all();
        }
    }
}

void Calls::CallBack(const std::function<void()>& call)
{
    std::unique_lock lock(m_mutex);
    m_call = &call;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return m_call == nullptr; });
}

void Calls::CallWithLock(const std::function<void()>* call) noexcept
{
    if (m_raised)
    {
        return;
    }
    StayOutOfTheEnd();
    const py::gil_scoped_acquire lock;
    try
    {
        if (call != nullptr)
        {
            (*call)();
        }
        if (PyErr_CheckSignals() != 0)
        {
            throw py::error_already_set();
        }
    }
    catch (...)
    {
        m_raised = std::current_exception();
        m_cancel.Cancel();
    }
}

} // namespace Zelnor::Python
