#include "Bindings/Python/Source/Exceptions.h"
#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Values.h"

#include "Conf/Interfaces/ConfException.h"
#include "Media/ErrorText.h"
#include "Media/MediaException.h"
#include "Media/Pages/Graphviz.h"
#include "Media/Verifying/Verification.h"

#include <boost/exception/errinfo_nested_exception.hpp>

#include <exception>
#include <stdexcept>
#include <utility>

namespace Zelnor::Python
{

namespace
{

using Conf::ProfileException;
using Core::PropertyException;
using Media::MediaException;

struct ExceptionClass
{
    const char* name; ///< in Python
    bool (*matches)(const Exception&);
};

template <class E>
bool Matches(const Exception& exception)
{
    return dynamic_cast<const E*>(&exception) != nullptr;
}

/// Derived classes stand before their bases.
constexpr ExceptionClass kClasses[] = {
    {"VerificationFailed", Matches<Media::VerificationFailed>},
    {"TranscodeFailed", Matches<Media::TranscodeFailed>},
    {"RunException", Matches<Media::RunException>},
    {"JobException", Matches<Media::JobException>},
    {"PlanException", Matches<Media::PlanException>},
    {"PresetFileException", Matches<Media::PresetFileException>},
    {"DrawingException", Matches<Media::DrawingException>},
    {"ProbeException", Matches<Media::ProbeException>},
    {"MediaException", Matches<Media::MediaException>},
    {"BadJson", Matches<Conf::BadJson>},
    {"LinkNotFound", Matches<Conf::LinkNotFound>},
    {"LinkExists", Matches<Conf::LinkExists>},
    {"NodeNotFound", Matches<Conf::NodeNotFound>},
    {"ProfileException", Matches<Conf::ProfileException>},
    {"FormatException", Matches<Conf::FormatException>},
    {"HelperException", Matches<Conf::HelperException>},
    {"CheckedPropertyHasDifferentTypeException", Matches<Conf::CheckedPropertyHasDifferentTypeException>},
    {"ConstraintIsNotApplicableForTypeException", Matches<Conf::ConstraintIsNotApplicableForTypeException>},
    {"ConstraintException", Matches<Conf::ConstraintException>},
    {"PresetException", Matches<Conf::PresetException>},
    {"ConfException", Matches<Conf::ConfException>},
    {"MethodIsNotApplicable", Matches<Core::MethodIsNotApplicable>},
    {"PropertyException", Matches<Core::PropertyException>},
    {"CoreException", Matches<Core::CoreException>},
};

const char* ClassOf(const Exception& exception)
{
    for (const ExceptionClass& row : kClasses)
    {
        if (row.matches(exception))
        {
            return row.name;
        }
    }
    return "ZelnorException";
}

py::object TagToPython(const std::string& text) { return ToPython(text); }
py::object TagToPython(const std::vector<std::string>& texts) { return ToTuple(texts); }
py::object TagToPython(const std::pair<long long, long long>& link)
{
    return py::make_tuple(link.first, link.second);
}
py::object TagToPython(long long number) { return py::int_(number); }
py::object TagToPython(int number) { return py::int_(number); }
py::object TagToPython(unsigned int number) { return py::int_(number); }
py::object TagToPython(const char* text) { return ToPython(std::string(text)); }
py::object TagToPython(PropertyTypes type) { return MakeValue("PropertyType", static_cast<int>(type)); }
py::object TagToPython(const std::vector<Media::TargetDifference>& differences)
{
    return ToTuple(differences);
}

/// Sets the attribute `name` if the exception has the tag; else that of its class stays, which is None.
template <class Tag>
void SetTag(const py::object& target, const char* name, const Exception& source)
{
    if (const auto* const value = boost::get_error_info<Tag>(source))
    {
        target.attr(name) = TagToPython(*value);
    }
}

void SetTags(const py::object& target, const Exception& source)
{
    SetTag<TagDescription>(target, "description", source);
    SetTag<TagCallStack>(target, "call_stack", source);
    SetTag<boost::throw_file>(target, "unit", source);
    SetTag<boost::throw_line>(target, "line", source);
    SetTag<PropertyException::TagPropertyName>(target, "property_name", source);
    SetTag<PropertyException::TagPropertyType>(target, "property_type", source);
    SetTag<PropertyException::TagMethodName>(target, "method_name", source);
    SetTag<ProfileException::TagRequestedLink>(target, "requested_link", source);
    SetTag<ProfileException::TagRequestedNodeId>(target, "requested_node_id", source);
    SetTag<ProfileException::TagJsonBadStructure>(target, "json_bad_structure", source);
    SetTag<MediaException::TagFile>(target, "file", source);
    SetTag<MediaException::TagNode>(target, "node", source);
    SetTag<MediaException::TagLink>(target, "link", source);
    SetTag<MediaException::TagStream>(target, "stream", source);
    SetTag<MediaException::TagKey>(target, "key", source);
    SetTag<Media::TranscodeFailed::TagExitCode>(target, "exit_code", source);
    SetTag<Media::TranscodeFailed::TagMessages>(target, "messages", source);
    SetTag<Media::VerificationFailed::TagDifferences>(target, "differences", source);
    SetTag<Media::VerificationFailed::TagKeptFile>(target, "kept_file", source);
}

/// More causes are not followed, so that no chain that names itself keeps this from ending.
constexpr int kLongestChain = 64;

py::object Translated(const std::exception_ptr& failure, int depth);

void SetCause(const py::object& target, const std::exception_ptr& cause, int depth)
{
    if (cause && depth < kLongestChain)
    {
        target.attr("__cause__") = Translated(cause, depth + 1);
    }
}

py::object MakeException(const py::object& type, const std::exception_ptr& failure)
{
    return type(ToPython(Media::ErrorText(failure)));
}

py::object BuiltinException(PyObject* type, const std::exception_ptr& failure)
{
    return MakeException(py::reinterpret_borrow<py::object>(type), failure);
}

/// The built-in exception that says the same as one of the standard library.
py::object StandardException(const std::exception_ptr& failure)
{
    try
    {
        std::rethrow_exception(failure);
    }
    catch (const std::bad_alloc&)
    {
        return BuiltinException(PyExc_MemoryError, failure);
    }
    catch (const std::out_of_range&)
    {
        return BuiltinException(PyExc_LookupError, failure);
    }
    catch (const std::logic_error&)
    {
        return BuiltinException(PyExc_ValueError, failure);
    }
    catch (...)
    {
        return BuiltinException(PyExc_RuntimeError, failure);
    }
}

py::object Translated(const std::exception_ptr& failure, int depth)
{
    try
    {
        std::rethrow_exception(failure);
    }
    catch (const py::error_already_set& error)
    {
        return error.value();
    }
    catch (const Exception& exception)
    {
        const py::object type = py::module_::import("zelnor._exceptions").attr(ClassOf(exception));
        py::object made = MakeException(type, failure);
        SetTags(made, exception);
        if (const auto* const nested = dynamic_cast<const std::nested_exception*>(&exception))
        {
            SetCause(made, nested->nested_ptr(), depth);
        }
        else if (const auto* const cause = boost::get_error_info<boost::errinfo_nested_exception>(exception))
        {
            try
            {
                boost::rethrow_exception(*cause);
            }
            catch (...)
            {
                SetCause(made, std::current_exception(), depth);
            }
        }
        return made;
    }
    catch (const std::exception& exception)
    {
        py::object made = StandardException(failure);
        if (const auto* const nested = dynamic_cast<const std::nested_exception*>(&exception))
        {
            SetCause(made, nested->nested_ptr(), depth);
        }
        return made;
    }
    catch (...)
    {
        return StandardException(failure);
    }
}

void Raise(const std::exception_ptr& failure)
{
    const py::object made = Translated(failure, 0);
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(made.ptr())), made.ptr());
}

void Translate(std::exception_ptr failure)
{
    try
    {
        if (failure)
        {
            std::rethrow_exception(failure);
        }
    }
    catch (const Exception&)
    {
        Raise(failure);
    }
    catch (const std::logic_error&)
    {
        Raise(failure);
    }
}

} // namespace

void BindExceptions() { py::register_exception_translator(&Translate); }

} // namespace Zelnor::Python
