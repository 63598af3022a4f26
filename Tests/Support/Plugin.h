#pragma once

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace Zelnor::Testing
{

/// One of the libraries of `Tests/Plugins`, loaded as long as this object lives.
class Plugin
{
public:
    explicit Plugin(const char* file) : m_handle(::dlopen(file, RTLD_NOW | RTLD_LOCAL))
    {
        if (m_handle == nullptr)
        {
            throw std::runtime_error(::dlerror());
        }
    }
    ~Plugin() { ::dlclose(m_handle); }
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    const void* Address() const { return ::dlsym(m_handle, "ZelnorPluginStack"); }

    /// The call stack that the plugin sees.
    std::string Stack() const
    {
        std::string stack;
        reinterpret_cast<void (*)(std::string&)>(::dlsym(m_handle, "ZelnorPluginStack"))(stack);
        return stack;
    }

    /// The call stack that the plugin sees where it throws.
    std::string StackOfThrow() const
    {
        try
        {
            reinterpret_cast<void (*)()>(::dlsym(m_handle, "ZelnorPluginThrow"))();
        }
        catch (const std::string& stack)
        {
            return stack;
        }
        return {};
    }

private:
    void* m_handle;
};

} // namespace Zelnor::Testing
