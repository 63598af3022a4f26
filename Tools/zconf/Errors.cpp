#include "Tools/zconf/Errors.h"

#include "Tools/zconf/StandardStreams.h"
#include "Tools/zconf/Terminal.h"
#include "Tools/zconf/Text.h"

#include "Conf/Interfaces/ConfException.h"

#include <new>

namespace Zelnor::Tool
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
    return "'" + (name == nullptr ? "" : *name) + "' is no group, so it cannot have children";
}

} // namespace

std::string Describe(const std::exception_ptr& failure)
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
        return text.empty() ? std::string("Failed with ") + typeid(exception).name() : text;
    }
    catch (const ToolError& error)
    {
        // A name in it may hold line breaks.
        return error.what();
    }
    catch (const std::bad_alloc&)
    {
        return "Not enough memory";
    }
    catch (const std::exception& exception)
    {
        return FirstLine(exception.what());
    }
    catch (...)
    {
        return "Failed for an unknown reason";
    }
}

void ReportFailure(const std::string& sentence)
{
    const Painter paint = Painter::ForStandardError();
    WriteMessage(paint(Style::Bad, "zconf:") + " " + Printable(sentence) + "\n");
}

void RethrowAbout(const std::string& place)
{
    try
    {
        throw;
    }
    catch (const Core::PropertyException&)
    {
        throw ToolError(place + ": " + Describe(std::current_exception()));
    }
    catch (const Core::CoreException&)
    {
        // The streams' exceptions name the file already.
        throw;
    }
    catch (const ClosedPipe&)
    {
        throw;
    }
    catch (...)
    {
        throw ToolError(place + ": " + Describe(std::current_exception()));
    }
}

} // namespace Zelnor::Tool
