// A module that throws what the libraries do not, to see what becomes of it in Python: every exception with
// all of its tags, and causes.
#include "Conf/Interfaces/ConfException.h"
#include "Core/Interfaces/Exception.h"
#include "Media/MediaException.h"
#include "Media/Pages/Graphviz.h"
#include "Media/Verifying/Verification.h"

#include <boost/exception/errinfo_nested_exception.hpp>
#include <boost/rational.hpp>
#include <pybind11/pybind11.h>

#include <functional>
#include <map>
#include <stdexcept>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using Conf::ProfileException;
using Core::PropertyException;

constexpr const char* kUnit = "Tests/Python/thrower";

template <class E>
void Throw()
{
    ZELNOR_THROW(kUnit, E() << TagDescription("described"));
}

template <class E>
E WithPropertyTags()
{
    E exception;
    exception << PropertyException::TagPropertyName("width")
              << PropertyException::TagPropertyType(PROPERTY_TYPE_RATIO)
              << PropertyException::TagMethodName("SetChildT");
    return exception;
}

template <class E>
E WithProfileTags()
{
    E exception;
    exception << ProfileException::TagRequestedLink({3, 2}) << ProfileException::TagRequestedNodeId(7)
              << ProfileException::TagJsonBadStructure("bad");
    return exception;
}

template <class E>
E WithMediaTags()
{
    E exception;
    exception << MediaException::TagFile("caf\xe9.mkv") << MediaException::TagNode(2)
              << MediaException::TagLink({3, 2}) << MediaException::TagStream(1)
              << MediaException::TagKey("a.b");
    return exception;
}

TranscodeFailed WithTranscodeTags()
{
    TranscodeFailed exception = WithMediaTags<TranscodeFailed>();
    exception << TranscodeFailed::TagExitCode(137)
              << TranscodeFailed::TagMessages(std::vector<std::string>{"one", "\xff"});
    return exception;
}

VerificationFailed WithVerificationTags()
{
    VerificationFailed exception = WithMediaTags<VerificationFailed>();
    exception << VerificationFailed::TagDifferences({{Place{}, "duration", "10 s", "5 s"}})
              << VerificationFailed::TagKeptFile("out.unverified.mp4");
    return exception;
}

/// A probe that failed since a file cannot be opened, since a number is wrong.
void ThrowNested()
{
    try
    {
        try
        {
            throw std::invalid_argument("the root\nand a call stack");
        }
        catch (...)
        {
            std::throw_with_nested(Core::CoreException() << TagDescription("the cause"));
        }
    }
    catch (...)
    {
        std::throw_with_nested(ProbeException() << TagDescription("the failure"));
    }
}

void ThrowWithCauseInATag()
{
    try
    {
        ZELNOR_THROW(kUnit, Core::CoreException() << TagDescription("the cause"));
    }
    catch (...)
    {
        ZELNOR_THROW(kUnit, ProbeException() << TagDescription("the failure")
                                             << boost::errinfo_nested_exception(boost::current_exception()));
    }
}

/// Each exception causes the next.
void ThrowChain(int length)
{
    if (length == 0)
    {
        throw std::out_of_range("the first");
    }
    try
    {
        ThrowChain(length - 1);
    }
    catch (...)
    {
        std::throw_with_nested(Core::CoreException() << TagDescription(std::to_string(length)));
    }
}

const std::map<std::string, std::function<void()>>& Throws()
{
    static const std::map<std::string, std::function<void()>> s_throws = {
        {"ZelnorException", Throw<Exception>},
        {"CoreException", Throw<Core::CoreException>},
        {"PropertyException", Throw<PropertyException>},
        {"MethodIsNotApplicable", Throw<Core::MethodIsNotApplicable>},
        {"ConfException", Throw<Conf::ConfException>},
        {"PresetException", Throw<Conf::PresetException>},
        {"ConstraintException", Throw<Conf::ConstraintException>},
        {"ConstraintIsNotApplicableForTypeException", Throw<Conf::ConstraintIsNotApplicableForTypeException>},
        {"CheckedPropertyHasDifferentTypeException", Throw<Conf::CheckedPropertyHasDifferentTypeException>},
        {"HelperException", Throw<Conf::HelperException>},
        {"FormatException", Throw<Conf::FormatException>},
        {"ProfileException", Throw<ProfileException>},
        {"NodeNotFound", Throw<Conf::NodeNotFound>},
        {"LinkExists", Throw<Conf::LinkExists>},
        {"LinkNotFound", Throw<Conf::LinkNotFound>},
        {"BadJson", Throw<Conf::BadJson>},
        {"MediaException", Throw<MediaException>},
        {"ProbeException", Throw<ProbeException>},
        {"PresetFileException", Throw<PresetFileException>},
        {"PlanException", Throw<PlanException>},
        {"JobException", Throw<JobException>},
        {"RunException", Throw<RunException>},
        {"DrawingException", Throw<DrawingException>},
        {"TranscodeFailed", Throw<TranscodeFailed>},
        {"VerificationFailed", Throw<VerificationFailed>},
        {"property tags", [] { ZELNOR_THROW(kUnit, WithPropertyTags<PropertyException>()); }},
        {"profile tags", [] { ZELNOR_THROW(kUnit, WithProfileTags<ProfileException>()); }},
        {"media tags", [] { ZELNOR_THROW(kUnit, WithMediaTags<JobException>()); }},
        {"transcode tags", [] { ZELNOR_THROW(kUnit, WithTranscodeTags()); }},
        {"verification tags", [] { ZELNOR_THROW(kUnit, WithVerificationTags()); }},
        {"nested", ThrowNested},
        {"cause in a tag", ThrowWithCauseInATag},
        {"chain", [] { ThrowChain(1000); }},
        {"bad rational", [] { throw boost::bad_rational(); }},
        {"memory", [] { throw std::bad_alloc(); }},
        {"nothing to say", [] { throw std::logic_error("\na call stack"); }},
    };
    return s_throws;
}

} // namespace

PYBIND11_MODULE(thrower, module)
{
    module.def("throw_", [](const std::string& name) { Throws().at(name)(); });
}
