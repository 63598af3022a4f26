#pragma once

#include "Tests/Support/Process.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// A real Slurm with a controller and the nodes "node1" and "node2" on this machine, each with ports and
/// files of its own. It lives as long as the object.
class SlurmCluster
{
public:
    /// \param largestArray  the cluster takes arrays with indices below this
    explicit SlurmCluster(int largestArray = 1001)
    {
        m_started = Control({"start"}, {"MAX_ARRAY_SIZE=" + std::to_string(largestArray)});
    }
    ~SlurmCluster() { Control({"stop"}); }
    SlurmCluster(const SlurmCluster&) = delete;
    SlurmCluster& operator=(const SlurmCluster&) = delete;

    /// Empty when it runs, else why not.
    std::string Fault() const { return m_started.exitCode == 0 ? "" : m_started.output + m_started.messages; }
    /// What programs that use it need in their environment.
    std::string Environment() const { return "SLURM_CONF=" + (m_folder / "c/slurm.conf").string(); }

    void KillNode(const std::string& node) const { Expect(Control({"kill-node", node})); }
    void StartNode(const std::string& node) const { Expect(Control({"start-node", node})); }
    void RestartController() const { Expect(Control({"restart-controller"})); }
    /// One of Slurm's own programs.
    std::string Ask(const std::vector<std::string>& command) const
    {
        ProcessOptions options;
        options.environment = {Environment()};
        const ProcessResult result = RunProcess(command, options);
        Expect(result);
        return result.output;
    }

private:
    ProcessResult Control(std::vector<std::string> arguments, std::vector<std::string> environment = {}) const
    {
        arguments.insert(arguments.begin(), {"bash", SLURM_CLUSTER_SCRIPT, (m_folder / "c").string()});
        ProcessOptions options;
        options.environment = std::move(environment);
        return RunProcess(arguments, options);
    }
    static void Expect(const ProcessResult& result)
    {
        EXPECT_EQ(result.exitCode, 0) << result.output << result.messages;
    }

    TemporaryFolder m_folder;
    ProcessResult m_started;
};

} // namespace Zelnor::Testing
