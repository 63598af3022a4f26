#include "Media/Batch/BatchResult.h"

#include "Media/Batch/BatchRecord.h"
#include "Media/Batch/RecordMembers.h"
#include "Media/MediaException.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <utility>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

constexpr const char* kUnit = "Media/Batch/BatchResult";

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

const std::vector<std::string>& StateNames()
{
    static const std::vector<std::string> s_names = {"running", "done", "failed", "cancelled"};
    return s_names;
}

const std::vector<std::string>& FailureNames()
{
    static const std::vector<std::string> s_names = {"", "ffmpeg", "different", "job", "run"};
    return s_names;
}

/// Whether it is as "2026-11-22T11:03:07Z", with the digits that stand for any.
bool IsTime(const std::string& text)
{
    const std::string form = "0000-00-00T00:00:00Z";
    bool fits = text.size() == form.size();
    for (std::size_t i = 0; fits && i < form.size(); ++i)
    {
        fits = form[i] == '0' ? text[i] >= '0' && text[i] <= '9' : text[i] == form[i];
    }
    return fits;
}

std::string TimeMember(const RecordMembers& members, const std::string& key)
{
    std::string time = members.Text(key);
    if (!IsTime(time))
    {
        ZELNOR_THROW(kUnit, MakeError<JobException>(members.At(key),
                                                    "expected a time in UTC, such as 2026-11-22T11:03:07Z, "
                                                    "found '" +
                                                        time + "'"));
    }
    return time;
}

FileStamp ReadStamp(const RecordMembers& result)
{
    const RecordMembers members(result.Group("replaced"), result.At("replaced"),
                                {"inode", "size", "modified"});
    FileStamp stamp;
    // Inodes use all bits.
    stamp.inode = static_cast<std::uint64_t>(
        members.Integer("inode", std::numeric_limits<std::int64_t>::min(), kLargest));
    stamp.size = static_cast<std::uint64_t>(members.Integer("size", 0, kLargest));
    stamp.modified = members.Integer("modified", std::numeric_limits<std::int64_t>::min(), kLargest);
    return stamp;
}

/// The numbers of the passes that ffmpeg can need.
constexpr std::array<const char*, 2> kPasses = {"1", "2"};

std::vector<std::vector<std::string>> ReadCommands(const RecordMembers& result)
{
    std::vector<std::vector<std::string>> commands;
    if (!result.Has("commands"))
    {
        return commands;
    }
    const RecordMembers members(result.Group("commands"), result.At("commands"), {kPasses[0], kPasses[1]});
    for (std::size_t i = 0; i < kPasses.size() && (i == 0 || members.Has(kPasses.at(i))); ++i)
    {
        const char* const pass = kPasses.at(i);
        std::vector<std::string> words = members.Texts(pass);
        const bool hasNul = std::any_of(words.begin(), words.end(), [](const std::string& word) {
            return word.find('\0') != std::string::npos;
        });
        if (words.empty() || hasNul)
        {
            ZELNOR_THROW(kUnit, MakeError<JobException>(members.At(pass),
                                                        words.empty() ? "expected the words of a command"
                                                                      : "a command cannot hold a NUL byte"));
        }
        commands.push_back(std::move(words));
    }
    return commands;
}

void SetCommands(Property& record, const std::vector<std::vector<std::string>>& commands)
{
    if (commands.empty())
    {
        return;
    }
    Property& group = record.SetChild("commands");
    for (std::size_t i = 0; i < commands.size(); ++i)
    {
        SetTexts(group, kPasses.at(i), commands[i]);
    }
}

} // namespace

double BatchResult::Speed() const
{
    return duration && elapsed > 0 ? static_cast<double>(*duration) / static_cast<double>(elapsed) : 0;
}

std::string NameOf(BatchResult::State state) { return StateNames()[static_cast<std::size_t>(state)]; }

std::string NameOf(BatchResult::Failure failure) { return FailureNames()[static_cast<std::size_t>(failure)]; }

std::string ResultText(const BatchResult& result)
{
    Property record("result");
    record.CreateChildT("version", 1);
    record.CreateChildT("state", NameOf(result.state));
    if (result.failure != BatchResult::Failure::None)
    {
        record.CreateChildT("failure", NameOf(result.failure));
        record.CreateChildT("reason", result.reason);
    }
    if (result.failure == BatchResult::Failure::FFmpeg)
    {
        record.CreateChildT("exitCode", result.exitCode);
    }
    SetTexts(record, "messages", result.messages);
    SetCommands(record, result.commands);
    SetTexts(record, "notes", result.notes);
    record.CreateChildT("verification", result.verification);
    record.CreateChildT("attempts", result.attempts);
    record.CreateChildT("host", result.host);
    record.CreateChildT("process", result.process);
    record.CreateChildT("started", result.started);
    if (!result.ended.empty())
    {
        record.CreateChildT("ended", result.ended);
    }
    record.CreateChildT("elapsed", result.elapsed);
    if (result.duration)
    {
        record.CreateChildT("duration", *result.duration);
    }
    record.CreateChildT("sizeBefore", result.sizeBefore);
    record.CreateChildT("sizeAfter", result.sizeAfter);
    if (result.replaced)
    {
        Property& stamp = record.SetChild("replaced");
        stamp.CreateChildT("inode", static_cast<std::int64_t>(result.replaced->inode));
        stamp.CreateChildT("size", result.replaced->size);
        stamp.CreateChildT("modified", result.replaced->modified);
    }
    return RecordDocument(record);
}

BatchResult ParseResult(const std::string& text, const std::string& file)
{
    const Property record = ParseRecord(text, file, "result");
    const RecordMembers members(record, Place{file},
                                {"version", "state", "failure", "reason", "exitCode", "messages", "commands",
                                 "notes", "verification", "attempts", "host", "process", "started", "ended",
                                 "elapsed", "duration", "sizeBefore", "sizeAfter", "replaced"});
    members.Integer("version", 1, 1);
    BatchResult result;
    result.state = static_cast<BatchResult::State>(members.Choice("state", StateNames()));
    if (members.Has("failure"))
    {
        result.failure = static_cast<BatchResult::Failure>(members.Choice("failure", FailureNames()));
        result.reason = members.Text("reason");
    }
    result.exitCode = members.Has("exitCode") ? static_cast<int>(members.Integer("exitCode", 0, 255)) : 0;
    result.messages = members.Texts("messages");
    result.commands = ReadCommands(members);
    result.notes = members.Texts("notes");
    result.verification = members.Text("verification");
    result.attempts =
        static_cast<unsigned int>(members.Integer("attempts", 0, std::numeric_limits<std::int32_t>::max()));
    result.host = members.Text("host");
    result.process = members.Integer("process", 0, kLargest);
    result.started = TimeMember(members, "started");
    result.ended = members.Has("ended") ? TimeMember(members, "ended") : "";
    result.elapsed = members.Integer("elapsed", 0, kLargest);
    if (members.Has("duration"))
    {
        result.duration = members.Integer("duration", 0, kLargest);
    }
    result.sizeBefore = static_cast<std::uint64_t>(members.Integer("sizeBefore", 0, kLargest));
    result.sizeAfter = static_cast<std::uint64_t>(members.Integer("sizeAfter", 0, kLargest));
    if (members.Has("replaced"))
    {
        result.replaced = ReadStamp(members);
    }
    return result;
}

} // namespace Zelnor::Media
