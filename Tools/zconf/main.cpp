#include "Tools/zconf/CommandLine.h"
#include "Tools/zconf/Errors.h"
#include "Tools/zconf/Logging.h"
#include "Tools/zconf/StandardStreams.h"

#include <exception>

int main(int argc, char** argv)
{
    using namespace Zelnor::Tool;
    try
    {
        PrepareStandardStreams();
        const Logging logging(argv[0]);
        return RunCommandLine(argc, argv);
    }
    catch (const ClosedPipe&)
    {
        return EndAsFilter();
    }
    catch (...)
    {
        ReportFailure(Describe(std::current_exception()));
        return kExitFailure;
    }
}
