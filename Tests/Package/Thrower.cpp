// A shared object of its own: what it throws crosses a border before a test catches it.

#include "Tests/Package/Thrower.h"

#include "Conf/Interfaces/ConfException.h"
#ifdef ZELNOR_WITH_MEDIA
#include "Media/Pages/Graphviz.h"
#include "Media/Verifying/Verification.h"
#endif

#include <cstdlib>
#include <utility>

namespace Zelnor::Testing
{

namespace
{

constexpr const char* kUnit = "Tests/Package/Thrower";

template <class E>
[[noreturn]] void Throw()
{
    ZELNOR_THROW(kUnit, E() << TagDescription("from another shared object"));
}

const std::vector<std::pair<std::string, void (*)()>>& Throwers()
{
    static const std::vector<std::pair<std::string, void (*)()>> throwers = {
        {"Exception", Throw<Exception>},
        {"CoreException", Throw<Core::CoreException>},
        {"PropertyException", Throw<Core::PropertyException>},
        {"MethodIsNotApplicable", Throw<Core::MethodIsNotApplicable>},
        {"ConfException", Throw<Conf::ConfException>},
        {"FormatException", Throw<Conf::FormatException>},
        {"PresetException", Throw<Conf::PresetException>},
        {"HelperException", Throw<Conf::HelperException>},
        {"ConstraintException", Throw<Conf::ConstraintException>},
        {"ConstraintIsNotApplicableForTypeException", Throw<Conf::ConstraintIsNotApplicableForTypeException>},
        {"CheckedPropertyHasDifferentTypeException", Throw<Conf::CheckedPropertyHasDifferentTypeException>},
        {"ProfileException", Throw<Conf::ProfileException>},
        {"LinkExists", Throw<Conf::LinkExists>},
        {"LinkNotFound", Throw<Conf::LinkNotFound>},
        {"NodeNotFound", Throw<Conf::NodeNotFound>},
        {"BadJson", Throw<Conf::BadJson>},
#ifdef ZELNOR_WITH_MEDIA
        {"MediaException", Throw<Media::MediaException>},
        {"ProbeException", Throw<Media::ProbeException>},
        {"PresetFileException", Throw<Media::PresetFileException>},
        {"PlanException", Throw<Media::PlanException>},
        {"JobException", Throw<Media::JobException>},
        {"DrawingException", Throw<Media::DrawingException>},
        {"RunException", Throw<Media::RunException>},
        {"TranscodeFailed", Throw<Media::TranscodeFailed>},
        {"VerificationFailed", Throw<Media::VerificationFailed>},
#endif
    };
    return throwers;
}

} // namespace

const std::vector<std::string>& GetExceptionClasses()
{
    static const std::vector<std::string> names = [] {
        std::vector<std::string> result;
        for (const auto& [name, thrower] : Throwers())
        {
            result.push_back(name);
        }
        return result;
    }();
    return names;
}

void ThrowByName(const std::string& name)
{
    for (const auto& [known, thrower] : Throwers())
    {
        if (known == name)
        {
            thrower();
        }
    }
    std::abort();
}

} // namespace Zelnor::Testing
