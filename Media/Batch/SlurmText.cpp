#include "Media/Batch/SlurmText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace Zelnor::Media
{

namespace
{

struct StateName
{
    std::string_view name;
    SlurmState state;
};

/// The words of `squeue` and `sacct`.
constexpr std::array kStates = {
    StateName{"PENDING", SlurmState::Queued},       StateName{"CONFIGURING", SlurmState::Running},
    StateName{"RUNNING", SlurmState::Running},      StateName{"COMPLETING", SlurmState::Running},
    StateName{"SIGNALING", SlurmState::Running},    StateName{"STAGE_OUT", SlurmState::Running},
    StateName{"RESIZING", SlurmState::Running},     StateName{"STOPPED", SlurmState::Running},
    StateName{"SUSPENDED", SlurmState::Running},    StateName{"REQUEUED", SlurmState::Requeued},
    StateName{"REQUEUE_FED", SlurmState::Requeued}, StateName{"REQUEUE_HOLD", SlurmState::Held},
    StateName{"RESV_DEL_HOLD", SlurmState::Held},   StateName{"SPECIAL_EXIT", SlurmState::Held},
    StateName{"COMPLETED", SlurmState::Ended},      StateName{"FAILED", SlurmState::Failed},
    StateName{"CANCELLED", SlurmState::Cancelled},  StateName{"TIMEOUT", SlurmState::TimedOut},
    StateName{"DEADLINE", SlurmState::TimedOut},    StateName{"OUT_OF_MEMORY", SlurmState::OutOfMemory},
    StateName{"NODE_FAIL", SlurmState::Lost},       StateName{"BOOT_FAIL", SlurmState::Lost},
    StateName{"PREEMPTED", SlurmState::Lost},       StateName{"REVOKED", SlurmState::Lost},
};

/// The accounts add who did it: "CANCELLED by 1000".
SlurmState StateOf(std::string_view text)
{
    const std::string_view word = text.substr(0, text.find(' '));
    const auto* const found =
        std::find_if(kStates.begin(), kStates.end(), [&](const StateName& row) { return row.name == word; });
    return found == kStates.end() ? SlurmState::Unknown : found->state;
}

/// A cluster whose node fails while it starts a task puts that back and holds it, for nobody in particular.
bool IsLaunchFailure(std::string_view reason)
{
    return reason.substr(0, 6) == "launch" && reason.find("failed") != std::string_view::npos;
}

bool IsHeld(std::string_view reason)
{
    // "JobHeldUser", "JobHoldMaxRequeue", "job requeued in held state"
    return reason.find("Held") != std::string_view::npos || reason.find("Hold") != std::string_view::npos ||
           reason.find("held") != std::string_view::npos;
}

/// What waits, more exactly.
SlurmState WaitingState(const SlurmTask& task)
{
    return IsLaunchFailure(task.reason) ? SlurmState::Lost
           : IsHeld(task.reason)        ? SlurmState::Held
           : task.restarts > 0          ? SlurmState::Requeued
                                        : SlurmState::Queued;
}

std::optional<long long> NumberIn(std::string_view text)
{
    long long number = 0;
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && last == end && number >= 0 ? std::optional(number) : std::nullopt;
}

/// The text up to the separator, which is taken off what is left of it.
std::string_view Take(std::string_view& text, char separator)
{
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view taken = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return taken;
}

std::string_view Trimmed(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// Slurm's words for nothing.
std::string Known(std::string_view text)
{
    return std::string(text == "None" || text == "None assigned" || text == "(null)" ? "" : text);
}

/// "1-4" or "7"
std::optional<IndexRanges::value_type> ReadRange(std::string_view text)
{
    const std::size_t dash = text.find('-');
    const std::optional<long long> first = NumberIn(text.substr(0, dash));
    const std::optional<long long> last =
        dash == std::string_view::npos ? first : NumberIn(text.substr(dash + 1));
    if (!first || !last || *last < *first)
    {
        return std::nullopt;
    }
    return std::pair(*first, *last);
}

void AddRange(const IndexRanges::value_type& range, IndexRanges& indices)
{
    if (!indices.empty() && indices.back().second + 1 == range.first)
    {
        indices.back().second = range.second;
    }
    else
    {
        indices.push_back(range);
    }
}

} // namespace

void AddIndex(long long index, IndexRanges& indices) { AddRange({index, index}, indices); }

std::string WriteIndices(const IndexRanges& indices)
{
    std::string text;
    for (const auto& [first, last] : indices)
    {
        text += (text.empty() ? "" : ",") + std::to_string(first);
        if (last != first)
        {
            text += "-" + std::to_string(last);
        }
    }
    return text;
}

std::optional<IndexRanges> ReadIndices(std::string_view text, std::size_t most)
{
    IndexRanges indices;
    std::size_t left = most;
    if (text.empty() || text.back() == ',')
    {
        return std::nullopt;
    }
    while (!text.empty())
    {
        const auto range = ReadRange(Take(text, ','));
        const bool fits = range && (indices.empty() || range->first > indices.back().second) &&
                          static_cast<unsigned long long>(range->second - range->first) < left;
        if (!fits)
        {
            return std::nullopt;
        }
        left -= static_cast<std::size_t>(range->second - range->first) + 1;
        AddRange(*range, indices);
    }
    return indices;
}

std::vector<SlurmTask> ReadQueue(std::string_view text)
{
    std::vector<SlurmTask> tasks;
    while (!text.empty())
    {
        std::string_view line = Take(text, '\n');
        const std::optional<long long> array = NumberIn(Take(line, '|'));
        const std::optional<long long> index = NumberIn(Take(line, '|'));
        if (!array || !index)
        {
            continue;
        }
        SlurmTask task{*array, *index};
        task.name = Take(line, '|');
        task.state = StateOf(Take(line, '|'));
        task.restarts = NumberIn(Take(line, '|')).value_or(0);
        task.node = Known(Take(line, '|'));
        task.reason = Known(Take(line, '|'));
        if (task.state == SlurmState::Queued)
        {
            task.state = WaitingState(task);
        }
        tasks.push_back(std::move(task));
    }
    return tasks;
}

std::vector<SlurmTask> ReadAccounts(std::string_view text)
{
    std::vector<SlurmTask> tasks;
    while (!text.empty())
    {
        std::string_view line = Take(text, '\n');
        std::string_view id = Take(line, '|');
        const std::optional<long long> array = NumberIn(Take(id, '_'));
        const std::optional<long long> index = NumberIn(id);
        if (!array || !index)
        {
            continue;
        }
        SlurmTask task{*array, *index};
        task.name = Take(line, '|');
        const SlurmState state = StateOf(Take(line, '|'));
        task.state = IsPending(state) ? SlurmState::Unknown : state;
        task.node = Known(Take(line, '|'));
        task.reason = Known(Take(line, '|'));
        tasks.push_back(std::move(task));
    }
    return tasks;
}

std::optional<long long> ReadSetting(std::string_view text, std::string_view name)
{
    while (!text.empty())
    {
        std::string_view line = Take(text, '\n');
        if (Trimmed(Take(line, '=')) == name)
        {
            return NumberIn(Trimmed(line).substr(0, Trimmed(line).find(' ')));
        }
    }
    return std::nullopt;
}

} // namespace Zelnor::Media
