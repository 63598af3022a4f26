#include "Media/Running/FFmpegRun.h"

#include "Media/MediaException.h"
#include "Media/Running/Subprocess.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <locale>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Running/FFmpegRun";

/// Cuts bytes into lines, of which it keeps the beginnings: what a program writes is not ours to bound.
class Lines
{
public:
    explicit Lines(std::function<void(const std::string&)> take) : m_take(std::move(take)) {}

    void Add(std::string_view bytes)
    {
        for (std::size_t end = 0; (end = bytes.find('\n')) != std::string_view::npos;)
        {
            Append(bytes.substr(0, end));
            bytes.remove_prefix(end + 1);
            m_take(std::exchange(m_line, ""));
        }
        Append(bytes);
    }
    void Finish()
    {
        if (!m_line.empty())
        {
            m_take(std::exchange(m_line, ""));
        }
    }

private:
    void Append(std::string_view bytes)
    {
        constexpr std::size_t kLongest = 4096;
        m_line += bytes.substr(0, kLongest - std::min(kLongest, m_line.size()));
    }

    std::function<void(const std::string&)> m_take;
    std::string m_line;
};

template <class Number>
std::optional<Number> ParseNumber(const std::string& text)
{
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    Number number = 0;
    return stream >> number ? std::optional<Number>(number) : std::nullopt;
}

/// Understands ffmpeg's "key=value" lines, of which "progress=..." ends each report.
class ProgressParser
{
public:
    explicit ProgressParser(const std::function<void(const FFmpegProgress&)>& report) : m_report(report) {}

    void Line(const std::string& line)
    {
        const std::size_t equals = line.find('=');
        const std::string key = line.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : line.substr(equals + 1);
        if (key == "out_time_us")
        {
            m_progress.done = std::max(m_progress.done, ParseNumber<std::int64_t>(value).value_or(0));
        }
        else if (key == "speed")
        {
            m_progress.speed = ParseNumber<double>(value).value_or(m_progress.speed);
        }
        else if (key == "progress")
        {
            m_report(m_progress);
        }
    }

private:
    const std::function<void(const FFmpegProgress&)>& m_report;
    FFmpegProgress m_progress;
};

/// What x265 tells of itself whatever it is told, between the lines of ffmpeg that matter.
bool IsInformation(std::string_view line)
{
    constexpr std::string_view kInformation = "x265 [info]: ";
    constexpr std::string_view kSummary = "encoded ";
    return line.empty() || line.substr(0, kInformation.size()) == kInformation ||
           (line.substr(0, kSummary.size()) == kSummary &&
            line.find(" kb/s, Avg QP:") != std::string_view::npos);
}

/// The last lines.
class Tail
{
public:
    void Add(const std::string& line)
    {
        constexpr std::size_t kLines = 10;
        if (IsInformation(line))
        {
            return;
        }
        m_lines.push_back(line);
        if (m_lines.size() > kLines)
        {
            m_lines.pop_front();
        }
    }
    std::vector<std::string> Get() const { return {m_lines.begin(), m_lines.end()}; }

private:
    std::deque<std::string> m_lines;
};

} // namespace

FFmpegResult RunFFmpeg(const std::vector<std::string>& command,
                       const std::function<void(const FFmpegProgress&)>& report,
                       const std::function<bool()>& isCancelled)
{
    ProgressParser progress(report);
    Tail tail;
    Lines output([&progress](const std::string& line) { progress.Line(line); });
    Lines messages([&tail](const std::string& line) { tail.Add(line); });
    SubprocessOptions options;
    options.onOutput = [&output](std::string_view bytes) { output.Add(bytes); };
    options.onMessages = [&messages](std::string_view bytes) { messages.Add(bytes); };
    options.isCancelled = isCancelled;
    // The terminal's signals come to us, and we stop ffmpeg in good order.
    options.inOwnGroup = true;
    FFmpegResult result;
    try
    {
        result.exitCode = RunSubprocess(command, options);
    }
    catch (const SubprocessError& error)
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>(error.what()));
    }
    output.Finish();
    messages.Finish();
    result.messages = tail.Get();
    return result;
}

} // namespace Zelnor::Media
