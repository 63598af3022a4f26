// What it costs to begin: loading the libraries, and whole commands from their start to their end. A program
// of its own, because it must not have the libraries loaded.
//
//   ZelnorStartBenchmarks [--benchmark_...]
//
// ZELNOR_COMMANDS names a file with a command in each line, its words separated by tabs: the name of its row
// first.

#include <benchmark/benchmark.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// Of the processor, since loading waits for nothing, and a busy machine must not count.
double GetSecondsUsed()
{
    timespec used{};
    (void)clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + 1e-9 * static_cast<double>(used.tv_nsec);
}

/// Seconds that loading takes in this process.
std::optional<double> LoadLibrary(const char* path)
{
    const double begin = GetSecondsUsed();
    if (dlopen(path, RTLD_NOW) == nullptr)
    {
        return std::nullopt;
    }
    return GetSecondsUsed() - begin;
}

/// The same in a process of its own, in which `present` is loaded already.
std::optional<double> LoadInChild(const char* present, const char* path)
{
    int ends[2];
    if (pipe(ends) != 0)
    {
        return std::nullopt;
    }
    const pid_t child = fork();
    if (child == 0)
    {
        (void)dlopen(present, RTLD_NOW);
        const double seconds = LoadLibrary(path).value_or(-1);
        _exit(write(ends[1], &seconds, sizeof seconds) == sizeof seconds ? 0 : 1);
    }
    close(ends[1]);
    double seconds = -1;
    const bool isRead = read(ends[0], &seconds, sizeof seconds) == sizeof seconds;
    close(ends[0]);
    (void)waitpid(child, nullptr, 0);
    return isRead && seconds >= 0 ? std::optional(seconds) : std::nullopt;
}

void Dlopen(benchmark::State& state, const char* path)
{
    for (auto _ : state)
    {
        const std::optional<double> seconds = LoadInChild(ZELNOR_GLOG, path);
        if (!seconds)
        {
            state.SkipWithError("the library cannot be loaded");
            return;
        }
        state.SetIterationTime(*seconds);
    }
}

/// Runs a program with its output thrown away, and tells whether it succeeded.
bool Run(const std::vector<std::string>& words)
{
    std::vector<char*> arguments;
    for (const std::string& word : words)
    {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    int status = -1;
    const bool isStarted =
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
    return isStarted && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void Command(benchmark::State& state, const std::vector<std::string>& words)
{
    for (auto _ : state)
    {
        const Clock::time_point begin = Clock::now();
        if (!Run(words))
        {
            state.SkipWithError("the command failed");
            return;
        }
        state.SetIterationTime(Seconds(Clock::now() - begin).count());
    }
}

void RegisterCommands(const char* path)
{
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
    {
        std::istringstream stream(line);
        std::vector<std::string> words;
        for (std::string word; std::getline(stream, word, '\t');)
        {
            words.push_back(word);
        }
        if (words.size() > 1)
        {
            const std::string name = words[0];
            words.erase(words.begin());
            benchmark::RegisterBenchmark(name.c_str(), Command, words)->UseManualTime();
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::RegisterBenchmark("Dlopen/Zelnor", Dlopen, ZELNOR_CONF)->UseManualTime();
    benchmark::RegisterBenchmark("Dlopen/1,000 std::string", Dlopen, ZELNOR_TEXTS)->UseManualTime();
    if (const char* const path = std::getenv("ZELNOR_COMMANDS"))
    {
        RegisterCommands(path);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
