#include "Media/Running/FilterCheck.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Running/Subprocess.h"
#include "Media/Running/TranscodeCommand.h"

#include <array>
#include <cstddef>
#include <optional>
#include <sstream>
#include <unordered_set>

namespace Zelnor::Media
{

namespace
{

/// Each needs a library of its own, but for the second, which is useless without the first.
constexpr std::array<const char*, 3> kOptional = {"zscale", "tonemap", "subtitles"};

/// Nothing when the program does not tell.
std::optional<std::unordered_set<std::string>> FiltersOf(const std::string& ffmpeg)
{
    FilterResult result;
    try
    {
        result = RunFilter({ffmpeg, "-hide_banner", "-v", "error", "-filters"}, "");
    }
    catch (const SubprocessError&)
    {
        return std::nullopt;
    }
    // Each line has flags, the name, the kinds of its inputs and outputs, and a sentence.
    std::unordered_set<std::string> filters;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);)
    {
        std::istringstream words(line);
        std::string flags;
        std::string name;
        std::string kinds;
        if (words >> flags >> name >> kinds && kinds.find("->") != std::string::npos)
        {
            filters.insert(name);
        }
    }
    return filters.empty() ? std::nullopt : std::optional(std::move(filters));
}

bool Uses(const StreamCommand& stream, const std::string& filter)
{
    const auto isIn = [text = filter + "="](const std::string& filters) {
        return filters.find(text) != std::string::npos;
    };
    return isIn(stream.filters) || isIn(stream.merge);
}

} // namespace

void CheckFilters(const Transcode& transcode, const std::string& ffmpeg, FaultList& faults)
{
    const TranscodeCommand command = MakeTranscodeCommand(transcode, faults);
    std::optional<std::unordered_set<std::string>> known;
    bool isAsked = false;
    for (std::size_t i = 0; i < command.streams.size(); ++i)
    {
        for (const std::string filter : kOptional)
        {
            if (!Uses(command.streams[i], filter))
            {
                continue;
            }
            if (!isAsked)
            {
                known = FiltersOf(ffmpeg);
                isAsked = true;
            }
            if (known && known->count(filter) == 0)
            {
                faults.Add(JobFault::Setting, transcode.streams[i].place,
                           "needs the filter '" + filter + "', which the installed FFmpeg does not have");
            }
        }
    }
}

} // namespace Zelnor::Media
