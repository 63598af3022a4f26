#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/Property.h"

#include <string>

/// A library that asks for its call stack, and that throws while it is loaded: its static initialiser runs
/// under the loader's lock.

namespace ZELNOR_PLUGIN
{

[[gnu::noinline]] ZELNOR_API std::string StackOfPlugin() { return Zelnor::GetCallStack() + ""; }

[[noreturn, gnu::noinline]] ZELNOR_API void ThrowStack() { throw Zelnor::GetCallStack(); }

namespace
{

[[gnu::noinline]] bool ThrowAndCatch()
{
    try
    {
        Zelnor::Core::Property("loaded", 1).GetString();
    }
    catch (const Zelnor::Exception&)
    {
        return true;
    }
    return false;
}

const bool g_threw = ThrowAndCatch();

} // namespace

} // namespace ZELNOR_PLUGIN

extern "C" ZELNOR_API void ZelnorPluginStack(std::string& stack)
{
    if (ZELNOR_PLUGIN::g_threw)
    {
        stack = ZELNOR_PLUGIN::StackOfPlugin();
    }
}

// Ends with the call, since that does not return: the return address is not in the function any more.
extern "C" ZELNOR_API void ZelnorPluginThrow() { ZELNOR_PLUGIN::ThrowStack(); }
