// A library that is loaded and unloaded at run time and brings ours with it.

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

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

class EmptyPreset final : public Zelnor::Counted<Zelnor::Conf::IPreset>
{
public:
    const Zelnor::Core::Property& GetProperty() const override { return m_record; }
    std::uint32_t GetStreamCount() const override { return 0; }
    void GetStreamIndexes(const std::string&, std::vector<int>& out) const override { out.clear(); }

private:
    Zelnor::Core::Property m_record = Zelnor::Core::Property("preset");
};

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

/// The libraries log that they replace a container.
extern "C" __attribute__((visibility("default"))) bool MakeThemLog()
{
    const boost::intrusive_ptr<const Zelnor::Conf::IPreset> preset = new EmptyPreset();
    return Zelnor::Conf::ITranscodingMetaGraph::MakeOutFileDescription(preset, "x", true).Count() == 2;
}
