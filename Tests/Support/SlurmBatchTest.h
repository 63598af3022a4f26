#pragma once

#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/ZconfTest.h"

#include <rapidjson/document.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// Batches of short sounds, in the test's folder, for a Slurm.
class SlurmBatchTest : public ZconfTest
{
protected:
    /// What `zconf` needs in its environment to find this Slurm.
    virtual std::vector<std::string> Environment() const = 0;
    /// How it is begun.
    virtual std::vector<std::string> Program(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), ZCONF_PROGRAM);
        return arguments;
    }

    void WriteProgram(const std::string& name, const std::string& script) const
    {
        Write(name, "#!/bin/bash\n" + script + "\n");
        std::filesystem::permissions(Folder() / name, std::filesystem::perms::owner_all |
                                                          std::filesystem::perms::others_read |
                                                          std::filesystem::perms::others_exec);
    }
    void PlanBatch(int count) const
    {
        Write("wav.json", kWavPreset);
        std::filesystem::create_directory(Folder() / "in");
        for (int i = 1; i <= count; ++i)
        {
            Write("in/" + std::to_string(1000 + i) + ".wav", SilentWav());
        }
        // Slow enough that something can happen meanwhile, slower as long as there is a file "hold", and for
        // the job whose input's name is in the file "held".
        WriteProgram(
            "slow",
            "folder='" + Folder().string() +
                "'\n"
                "case \"$*\" in *progress*) sleep 0.1\n"
                "while [[ -e $folder/hold || ( -s $folder/held && \"$*\" == *\"$(<$folder/held)\"* ) ]]; do "
                "sleep 0.1; done;; esac\nexec ffmpeg \"$@\"");
        const ProcessResult made =
            Zconf({"batch", "new", "--preset", "wav.json", "--output-dir", "out", "-o", "b", "in"});
        ASSERT_EQ(made.exitCode, 0) << made.messages;
    }
    ProcessResult Batch(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "batch");
        ProcessOptions options;
        options.environment = Environment();
        options.folder = Folder().string();
        return RunProcess(Program(std::move(arguments)), options);
    }
    ProcessResult RunOnSlurm(const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments = {"run",   "b",        "--engine",
                                              "slurm", "--ffmpeg", (Folder() / "slow").string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Batch(arguments);
    }

    /// The jobs' states, and those of their tasks, as `batch status --json` tells them.
    std::vector<std::string> States() const { return WordsOf(false); }
    std::vector<std::string> TaskStates() const { return WordsOf(true); }
    std::size_t CountDone() const { return Count(States(), "done"); }
    static std::size_t Count(const std::vector<std::string>& words, const std::string& word)
    {
        return static_cast<std::size_t>(std::count(words.begin(), words.end(), word));
    }
    static bool WaitUntil(const std::function<bool()>& isSo)
    {
        constexpr std::chrono::seconds kPatience(60);
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (std::chrono::steady_clock::now() < end)
        {
            if (isSo())
            {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return false;
    }

private:
    std::vector<std::string> WordsOf(bool ofTasks) const
    {
        const ProcessResult status = Batch({"status", "b", "--json"});
        rapidjson::Document json;
        json.Parse(status.output.c_str());
        EXPECT_FALSE(json.HasParseError()) << status.output << status.messages;
        std::vector<std::string> words;
        for (const auto& job : json["jobs"].GetArray())
        {
            if (!ofTasks)
            {
                words.emplace_back(job["state"].GetString());
            }
            else if (job.HasMember("slurm"))
            {
                words.emplace_back(job["slurm"]["state"].GetString());
            }
        }
        return words;
    }
};

} // namespace Zelnor::Testing
