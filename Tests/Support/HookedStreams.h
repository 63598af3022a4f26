#pragma once

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace Zelnor::Testing
{

/// Is called before each read or write with its number, counted from 1.
using StreamHook = std::function<void(std::size_t call)>;

/// Gives bytes out in blocks as a file does.
class HookedInput final : public Counted<Core::IDataInput>
{
public:
    static boost::intrusive_ptr<HookedInput> Create(std::string bytes, StreamHook hook)
    {
        return new HookedInput(std::move(bytes), std::move(hook));
    }

    std::size_t Read(void* buffer, std::size_t size) override
    {
        m_hook(++m_calls);
        return m_input->Read(buffer, size);
    }

private:
    HookedInput(std::string bytes, StreamHook hook)
        : m_input(Core::MemoryDataInput::Create(std::move(bytes))), m_hook(std::move(hook))
    {}

    boost::intrusive_ptr<Core::MemoryDataInput> m_input;
    StreamHook m_hook;
    std::size_t m_calls = 0;
};

/// Collects bytes in a string that outlives it.
class HookedOutput final : public Counted<Core::IDataOutput>
{
public:
    static boost::intrusive_ptr<HookedOutput> Create(StreamHook hook)
    {
        return new HookedOutput(std::move(hook));
    }

    void Write(const void* data, std::size_t size) override
    {
        m_hook(++m_calls);
        m_bytes->append(static_cast<const char*>(data), size);
    }

    std::shared_ptr<const std::string> GetBytes() const { return m_bytes; }

private:
    explicit HookedOutput(StreamHook hook) : m_hook(std::move(hook)) {}

    StreamHook m_hook;
    std::shared_ptr<std::string> m_bytes = std::make_shared<std::string>();
    std::size_t m_calls = 0;
};

} // namespace Zelnor::Testing
