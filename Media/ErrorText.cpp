#include "Media/ErrorText.h"

#include "Conf/Interfaces/ConfException.h"

#include <new>
#include <typeinfo>

namespace Zelnor::Media
{

namespace
{

using Conf::ProfileException;

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

std::string DescribeLink(const ProfileException& exception, const std::pair<long long, long long>& link)
{
    const std::string name =
        "from node " + std::to_string(link.first) + " to node " + std::to_string(link.second);
    return dynamic_cast<const Conf::LinkExists*>(&exception) != nullptr ? "There is already a link " + name
                                                                        : "There is no link " + name;
}

/// Empty when the exception carries no detail.
std::string DescribeProfile(const ProfileException& exception)
{
    if (const auto* const text = boost::get_error_info<ProfileException::TagJsonBadStructure>(exception))
    {
        return *text;
    }
    if (const auto* const id = boost::get_error_info<ProfileException::TagRequestedNodeId>(exception))
    {
        return "There is no node " + std::to_string(*id);
    }
    if (const auto* const link = boost::get_error_info<ProfileException::TagRequestedLink>(exception))
    {
        return DescribeLink(exception, *link);
    }
    return "";
}

std::string DescribeTagged(const Exception& exception)
{
    if (const auto* const text = boost::get_error_info<TagDescription>(exception))
    {
        return *text;
    }
    if (const auto* const profile = dynamic_cast<const ProfileException*>(&exception))
    {
        return DescribeProfile(*profile);
    }
    return "";
}

std::string DescribeRefusal(const Core::MethodIsNotApplicable& exception)
{
    const auto* const name = boost::get_error_info<Core::PropertyException::TagPropertyName>(exception);
    return "'" + (name == nullptr ? "" : *name) + "' is not a group, so it cannot have children";
}

template <class E>
std::string NameOf(const E& exception)
{
    return std::string("Failed with ") + typeid(exception).name();
}

} // namespace

std::string ErrorText(const std::exception_ptr& failure)
{
    try
    {
        std::rethrow_exception(failure);
    }
    catch (const Core::MethodIsNotApplicable& exception)
    {
        const std::string text = DescribeTagged(exception);
        return text.empty() ? DescribeRefusal(exception) : text;
    }
    catch (const Exception& exception)
    {
        const std::string text = DescribeTagged(exception);
        return text.empty() ? NameOf(exception) : text;
    }
    catch (const std::bad_alloc&)
    {
        return "Not enough memory";
    }
    catch (const std::exception& exception)
    {
        // Some of the vocabulary's look-ups have nothing to say.
        const std::string text = FirstLine(exception.what());
        return text.empty() ? NameOf(exception) : text;
    }
    catch (...)
    {
        return "Failed for an unknown reason";
    }
}

} // namespace Zelnor::Media
