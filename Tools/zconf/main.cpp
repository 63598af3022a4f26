#include "Media/Probe/FFmpegLog.h"
#include "Tools/zconf/Commands/Commands.h"
#include "Tools/zconf/Commands/ShellCompletion.h"
#include "Tools/zconf/Console/CommandLine.h"
#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Logging.h"
#include "Tools/zconf/Console/StandardStreams.h"

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

namespace
{

/// All that is left to do is to give memory back, ours and that of FFmpeg's hundred libraries, and the system
/// is faster at that. A sanitizer counts what is left at an end in good order.
int End(int exitCode)
{
#ifndef ZCONF_IS_SANITIZED
    (void)std::fflush(nullptr);
    std::_Exit(exitCode);
#else
    return exitCode;
#endif
}

} // namespace

int main(int argc, char** argv)
{
    using namespace Zelnor::Tool;
    try
    {
        PrepareStandardStreams();
        // A parent may leave it ignored, and the system would not tell how the programs that we run end.
        (void)::signal(SIGCHLD, SIG_DFL);
        if (argc > 1 && std::string_view(argv[1]) == kCompleteArgument)
        {
            return RunShellCompletion(argc, argv);
        }
        const Logging logging(argv[0]);
        // FFmpeg's messages are told as part of ours; standard error is for our own lines.
        Zelnor::Media::KeepFFmpegMessages([](void*, int, const char*, std::va_list) {});
        return End(
            RunCommandLine(argc, argv, [argc, argv](CLI::App& app) { AddNamedCommand(app, argc, argv); }));
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
