#include "Tools/zconf/Console/Errors.h"

#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Terminal.h"
#include "Tools/zconf/Console/Text.h"

#include "Media/ErrorText.h"

namespace Zelnor::Tool
{

std::string Describe(const std::exception_ptr& failure)
{
    try
    {
        std::rethrow_exception(failure);
    }
    catch (const ToolError& error)
    {
        // All of it: a name in it may hold line breaks.
        return error.what();
    }
    catch (...)
    {
        return Media::ErrorText(failure);
    }
}

void ReportFailure(const std::string& sentence)
{
    const Painter paint = Painter::ForStandardError();
    WriteMessage(paint(Style::Bad, "zconf:") + " " + Printable(sentence) + "\n");
}

void ReportNote(const std::string& sentence) { WriteMessage("zconf: note: " + Printable(sentence) + "\n"); }

} // namespace Zelnor::Tool
