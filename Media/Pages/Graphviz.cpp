#include "Media/Pages/Graphviz.h"

#include "Media/Pages/GraphvizProcess.h"
#include "Media/Running/Subprocess.h"

#include <utility>

namespace Zelnor::Media
{

namespace
{

[[noreturn]] void ThrowDrawingError(const std::string& reason)
{
    ZELNOR_THROW("Media/Pages/Graphviz", MakeError<DrawingException>(reason));
}

} // namespace

DrawingException::~DrawingException() noexcept = default;

std::string RunGraphviz(const std::string& dot, const std::string& format, const std::string& name,
                        std::optional<std::chrono::seconds> limit)
{
    using Clock = std::chrono::steady_clock;
    SubprocessOptions options;
    options.input = dot;
    bool isLate = false;
    if (limit)
    {
        options.inOwnGroup = true;
        options.isCancelled = [&isLate, end = Clock::now() + *limit] {
            isLate = isLate || Clock::now() > end;
            return isLate;
        };
    }
    FilterResult result = RunFilter({"dot", "-T" + format}, std::move(options));
    if (!result.started)
    {
        ThrowDrawingError(
            "Drawing as " + name +
            " needs Graphviz, whose program 'dot' is not in PATH; the format dot does not need it");
    }
    if (isLate)
    {
        ThrowDrawingError("Graphviz took longer than " + std::to_string(limit->count()) + " s");
    }
    if (result.exitCode != 0 || result.output.empty())
    {
        const std::string message = result.messages.substr(0, result.messages.find('\n'));
        ThrowDrawingError("Graphviz failed with exit code " + std::to_string(result.exitCode) +
                          (message.empty() ? "" : ": " + message));
    }
    return std::move(result.output);
}

std::string DrawWithGraphviz(const std::string& dot, const std::string& format)
{
    return RunGraphviz(dot, format, format, std::nullopt);
}

} // namespace Zelnor::Media
