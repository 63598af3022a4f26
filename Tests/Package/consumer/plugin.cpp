// A library that a program loads at run time. Both use our libraries, and each may be built by another
// compiler.
#include "plugin.h"

#include "Conf/Interfaces/ConfException.h"
#include "Core/Interfaces/Property.h"

#include <boost/exception/get_error_info.hpp>

namespace
{

// Its type is this library's alone, and what it derives from is ours.
struct PluginException : Zelnor::Conf::ConfException
{};

} // namespace

extern "C" {

void ThrowOfLibrary() { Zelnor::Core::Property("title", "a film").GetRatio(); }

void ThrowOfTemplate() { Zelnor::Core::Property("bitrate", 1LL).SetChildT("codec", 1LL); }

void ThrowOfPlugin()
{
    ZELNOR_THROW("plugin", PluginException() << Zelnor::TagDescription("of the plug-in"));
}

bool CatchesWhatIsThrown(void (*action)(), std::string& description)
{
    try
    {
        action();
    }
    catch (const Zelnor::Conf::BadJson& e)
    {
        const std::string* const text = boost::get_error_info<Zelnor::TagDescription>(e);
        description = text == nullptr ? "" : *text;
        return true;
    }
    catch (...)
    {}
    return false;
}

Zelnor::Conf::IFormatCodec* MakeCodec()
{
    auto codec = Zelnor::Conf::IFormatCodec::Create();
    codec->AddRef();
    return codec.get();
}

} // extern "C"
