// host <library> <times>: loads the plug-in, catches what it throws, throws into it, uses an object of it,
// and sees it leave memory.
#include "plugin.h"

#include "Conf/Interfaces/ConfException.h"

#include <boost/exception/get_error_info.hpp>

#include <dlfcn.h>

#include <cstdlib>
#include <iostream>

namespace
{

void Check(bool holds, const char* what)
{
    if (!holds)
    {
        std::cerr << what << '\n';
        std::exit(1);
    }
}

template <class E, class Tag>
bool Throws(void (*action)(), const typename Tag::value_type& expected)
{
    try
    {
        action();
    }
    catch (const E& e)
    {
        const auto* const found = boost::get_error_info<Tag>(e);
        return found != nullptr && *found == expected;
    }
    catch (...)
    {}
    return false;
}

void ThrowOfHost()
{
    ZELNOR_THROW("host", Zelnor::Conf::BadJson() << Zelnor::TagDescription("of the program"));
}

void LoadUseAndUnload(const char* library)
{
    using Zelnor::Core::MethodIsNotApplicable;
    using Zelnor::Core::PropertyException;
    void* const plugin = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    Check(plugin != nullptr, "not loaded");
    const auto function = [plugin](const char* name) {
        return reinterpret_cast<void (*)()>(dlsym(plugin, name));
    };
    Check(Throws<PropertyException, PropertyException::TagPropertyName>(function("ThrowOfLibrary"), "title"),
          "what our library throws in the plug-in");
    Check(Throws<MethodIsNotApplicable, PropertyException::TagMethodName>(function("ThrowOfTemplate"),
                                                                          "SetChildT"),
          "what our templates throw in the plug-in");
    Check(Throws<Zelnor::Conf::ConfException, Zelnor::TagDescription>(function("ThrowOfPlugin"),
                                                                      "of the plug-in"),
          "what the plug-in throws");

    std::string description;
    const auto catches = reinterpret_cast<decltype(&CatchesWhatIsThrown)>(function("CatchesWhatIsThrown"));
    Check(catches(ThrowOfHost, description) && description == "of the program", "what the program throws");

    Zelnor::Conf::IFormatCodec* const codec = reinterpret_cast<decltype(&MakeCodec)>(function("MakeCodec"))();
    Check(codec->GetRefCount() == 1, "an object of the plug-in");
    codec->Release();

    dlclose(plugin);
    Check(dlopen(library, RTLD_NOW | RTLD_NOLOAD) == nullptr, "stays in memory");
}

} // namespace

int main(int, char** arguments)
{
    for (int left = std::atoi(arguments[2]); left > 0; --left)
    {
        LoadUseAndUnload(arguments[1]);
    }
}
