// A library that is loaded and unloaded at run time and brings ours with it.

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Core/Interfaces/Property.h"

#include <stdexcept>

namespace
{

constexpr const char* kUnit = "Tests/Package/Unloadable";

template <class E, class Action>
bool Throws(Action&& action)
{
    try
    {
        action();
    }
    catch (const E&)
    {
        return true;
    }
    return false;
}

} // namespace

/// Uses both libraries, and throws and catches: all this might leave something behind that keeps them in
/// memory.
extern "C" __attribute__((visibility("default"))) bool UseTheLibraries()
{
    using namespace Zelnor;
    const auto codec = Conf::IFormatCodec::Create();
#ifdef __OPTIMIZE__
    // Without optimisation, GCC makes objects of Boost's own trees unique.
    codec->GetInternalProperties().put("key", 1);
#endif
    return codec->GetRefCount() == 1 &&
           Throws<Core::PropertyException>([&] { static_cast<void>(codec->GetProperty()["missing"]); }) &&
           Throws<Exception>([] { Core::Property("number", 1LL).SetChildT("child", 1LL); }) &&
           Throws<Conf::ConfException>([] { ZELNOR_THROW(kUnit, Conf::BadJson()); }) &&
           Throws<std::invalid_argument>([] { ZELNOR_THROW(kUnit, std::invalid_argument("bad")); });
}
