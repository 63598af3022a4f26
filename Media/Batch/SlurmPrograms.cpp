#include "Media/Batch/SlurmPrograms.h"

#include "Media/MediaException.h"
#include "Media/Running/Subprocess.h"

#include "Core/Interfaces/Exception.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <utility>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Batch/SlurmPrograms";

/// Options of `sbatch` that would make something else of the array than this library says, send it where the
/// other programs are not asked, or keep its number from being printed.
constexpr std::array<std::string_view, 14> kFixedOptions = {
    "array",    "chdir", "cluster",   "clusters", "help",    "job-name", "output",
    "parsable", "quiet", "test-only", "usage",    "version", "wait",     "wrap"};

/// A user's own defaults for these programs. Those would hide tasks from the queue and the accounts, so that
/// they would be taken for lost and submitted again, keep some from being cancelled, or wait for the array's
/// end. Those of `sbatch` for partition, account and the like are meant for the batch, too.
constexpr std::array kHiddenVariables = {"SQUEUE_", "SACCT_", "SCANCEL_",
                                         "SBATCH_WAIT=", "SLURM_EXIT_ERROR="};

/// What the program said, in one line.
std::string OneLine(std::string text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == ' '))
    {
        text.pop_back();
    }
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

FilterResult RunIfThere(const std::vector<std::string>& command)
{
    SubprocessOptions options;
    options.hidden.assign(kHiddenVariables.begin(), kHiddenVariables.end());
    return RunFilter(command, options);
}

/// Tasks have numbers that only one cluster knows, which all programs must mean.
void CheckClusters()
{
    if (std::getenv("SBATCH_CLUSTERS") != nullptr)
    {
        ZELNOR_THROW(kUnit,
                     MakeError<RunException>("SBATCH_CLUSTERS is set, which the other programs of Slurm "
                                             "do not know; name the cluster with SLURM_CLUSTERS"));
    }
    const char* const variable = std::getenv("SLURM_CLUSTERS");
    const std::string clusters = variable == nullptr ? "" : variable;
    if (clusters == "all" || clusters.find(',') != std::string::npos)
    {
        ZELNOR_THROW(kUnit,
                     MakeError<RunException>("SLURM_CLUSTERS: expected the name of one cluster, found '" +
                                             clusters + "'"));
    }
}

/// What the program prints, or nothing and its messages when it refuses.
FilterResult Run(const std::vector<std::string>& command)
{
    CheckClusters();
    FilterResult result = RunIfThere(command);
    if (!result.started)
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("there is no program '" + command.front() +
                                                    "': Slurm's client programs are not installed"));
    }
    return result;
}

[[noreturn]] void ThrowRefusal(const std::vector<std::string>& command, const FilterResult& result)
{
    const std::string said = OneLine(result.messages);
    ZELNOR_THROW(kUnit, MakeError<RunException>(said.empty() ? command.front() + " ended with exit code " +
                                                                   std::to_string(result.exitCode)
                                                             : said));
}

std::string Ask(const std::vector<std::string>& command)
{
    FilterResult result = Run(command);
    if (result.exitCode != 0)
    {
        ThrowRefusal(command, result);
    }
    return std::move(result.output);
}

std::string JoinNumbers(const std::vector<long long>& numbers)
{
    std::string text;
    for (const long long number : numbers)
    {
        text += (text.empty() ? "" : ",") + std::to_string(number);
    }
    return text;
}

std::vector<SlurmTask> AskQueue(const std::vector<long long>& arrays)
{
    const std::vector<std::string> command = {"squeue",
                                              "--noheader",
                                              "--array",
                                              "--states=all",
                                              "--jobs=" + JoinNumbers(arrays),
                                              std::string("--Format=") + kQueueFields};
    const FilterResult result = Run(command);
    if (result.exitCode != 0 && result.messages.find("Invalid job id") == std::string::npos)
    {
        ThrowRefusal(command, result);
    }
    return result.exitCode == 0 ? ReadQueue(result.output) : std::vector<SlurmTask>();
}

/// A cluster without accounts, or without the program, has nothing to say.
std::vector<SlurmTask> AskAccounts(const std::vector<long long>& arrays)
{
    const FilterResult result =
        RunIfThere({"sacct", "--noheader", "--allocations", "--parsable2", "--jobs=" + JoinNumbers(arrays),
                    std::string("--format=") + kAccountFields});
    return result.started && result.exitCode == 0 ? ReadAccounts(result.output) : std::vector<SlurmTask>();
}

bool IsBefore(const SlurmTask& one, const SlurmTask& other)
{
    return std::pair(one.array, one.index) < std::pair(other.array, other.index);
}

/// `getopt_long` takes any beginning of a name that no other name has, so that any beginning counts.
bool IsFixed(std::string_view option)
{
    const std::string_view name = option.substr(2, option.find('=') - 2);
    return std::any_of(kFixedOptions.begin(), kFixedOptions.end(),
                       [name](std::string_view fixed) { return fixed.substr(0, name.size()) == name; });
}

} // namespace

long long AskArrayLimit()
{
    const auto limit = ReadSetting(Ask({"scontrol", "show", "config"}), "MaxArraySize");
    // No cluster says so little unless arrays are switched off.
    if (!limit || *limit < 2)
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("the cluster does not take arrays of jobs"));
    }
    return *limit;
}

long long SubmitArray(const ArrayRequest& request)
{
    std::vector<std::string> command = {"sbatch", "--open-mode=append"};
    command.insert(command.end(), request.options.begin(), request.options.end());
    const std::string limit = request.parallel == 0 ? "" : "%" + std::to_string(request.parallel);
    command.insert(command.end(), {"--parsable", "--output=" + request.log, "--job-name=" + request.name,
                                   "--chdir=" + request.folder,
                                   "--array=" + WriteIndices(request.indices) + limit, request.script});
    command.insert(command.end(), request.arguments.begin(), request.arguments.end());
    const std::string printed = Ask(command);

    long long id = 0;
    std::from_chars(printed.data(), printed.data() + printed.size(), id);
    if (id <= 0)
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>("sbatch does not tell the number of the array: '" +
                                                    OneLine(printed) + "'"));
    }
    return id;
}

long long FindArray(const std::string& name)
{
    const std::vector<SlurmTask> tasks =
        ReadQueue(Ask({"squeue", "--noheader", "--array", "--states=all", "--me", "--name=" + name,
                       std::string("--Format=") + kQueueFields}));
    return tasks.empty() ? 0 : tasks.front().array;
}

std::vector<SlurmTask> AskTasks(const std::vector<long long>& arrays)
{
    if (arrays.empty())
    {
        return {};
    }
    std::vector<SlurmTask> tasks = AskQueue(arrays);
    std::sort(tasks.begin(), tasks.end(), IsBefore);
    std::vector<SlurmTask> older = AskAccounts(arrays);
    std::sort(older.begin(), older.end(), IsBefore);

    std::vector<SlurmTask> all;
    std::set_union(tasks.begin(), tasks.end(), older.begin(), older.end(), std::back_inserter(all), IsBefore);
    return all;
}

void CancelTasks(const std::vector<std::string>& tasks)
{
    // A command has a longest length.
    constexpr std::ptrdiff_t kMostAtOnce = 1000;
    for (auto first = tasks.begin(); first != tasks.end();)
    {
        const auto last = first + std::min(kMostAtOnce, tasks.end() - first);
        std::vector<std::string> command = {"scancel", "--quiet"};
        command.insert(command.end(), first, last);
        Ask(command);
        first = last;
    }
}

void CheckOptions(const std::vector<std::string>& options)
{
    for (const std::string& option : options)
    {
        // Short ones may stand for several.
        if (option.size() < 3 || option.substr(0, 2) != "--")
        {
            ZELNOR_THROW(kUnit, MakeError<RunException>("'" + option +
                                                        "' is not a long option of sbatch; give it and "
                                                        "its value as one word, as in --partition=long"));
        }
        if (IsFixed(option))
        {
            ZELNOR_THROW(kUnit,
                         MakeError<RunException>(option + ": this option of sbatch is set for the batch"));
        }
    }
}

} // namespace Zelnor::Media
