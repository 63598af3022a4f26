#pragma once

#include "Tests/Support/Process.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <pwd.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// Somebody else, as whom the superuser can run programs.
class OtherUser
{
public:
    OtherUser() = default; ///< nobody else
    explicit OtherUser(const std::string& name) : m_name(name) {}

    /// The command as that user runs it.
    std::vector<std::string> Run(std::vector<std::string> command) const
    {
        if (!m_name.empty())
        {
            command.insert(command.begin(), {"setpriv", "--reuid=" + m_name,
                                             "--regid=" + std::to_string(Entry().pw_gid), "--clear-groups"});
        }
        return command;
    }
    /// Makes that user the owner of a folder and of all that is in it.
    void Own(const std::filesystem::path& folder) const
    {
        if (m_name.empty())
        {
            return;
        }
        const passwd& entry = Entry();
        EXPECT_EQ(::chown(folder.c_str(), entry.pw_uid, entry.pw_gid), 0) << folder;
        for (const auto& file : std::filesystem::recursive_directory_iterator(folder))
        {
            EXPECT_EQ(::lchown(file.path().c_str(), entry.pw_uid, entry.pw_gid), 0) << file.path();
        }
    }

private:
    const passwd& Entry() const
    {
        const passwd* const entry = ::getpwnam(m_name.c_str());
        if (entry == nullptr)
        {
            throw std::runtime_error("there is no user " + m_name);
        }
        return *entry;
    }

    std::string m_name;
};

/// A real Slurm with a controller and the nodes "node1" and "node2" on this machine, each of four processors
/// and with ports and files of its own. It lives as long as the object, and not longer than this process.
class SlurmCluster
{
public:
    static constexpr std::size_t kProcessorsOfNode = 4;

    /// \param largestArray  the cluster takes arrays with indices below this
    explicit SlurmCluster(int largestArray = 1001, OtherUser user = {}) : m_user(std::move(user))
    {
        // The user may not be let into the folder of the sources.
        std::filesystem::copy_file(SLURM_CLUSTER_SCRIPT, m_folder / "cluster.sh");
        m_user.Own(m_folder.Path());
        m_started = Control({"start"}, {"MAX_ARRAY_SIZE=" + std::to_string(largestArray),
                                        "OWNER=" + std::to_string(::getpid())});
    }
    ~SlurmCluster() { Control({"stop"}); }
    SlurmCluster(const SlurmCluster&) = delete;
    SlurmCluster& operator=(const SlurmCluster&) = delete;

    /// Empty when it runs, else why not.
    std::string Fault() const
    {
        const std::string said = m_started.output + m_started.messages;
        return m_started.exitCode == 0 ? "" : said.empty() ? "it takes too long" : said;
    }
    /// What programs that use it need in their environment.
    std::string Environment() const { return "SLURM_CONF=" + (m_folder / "c/slurm.conf").string(); }

    void KillNode(const std::string& node) const { Expect(Control({"kill-node", node})); }
    void StartNode(const std::string& node) const { Expect(Control({"start-node", node})); }
    void StopController() const { Expect(Control({"stop-controller"})); }
    void StartController() const { Expect(Control({"start-controller"})); }
    /// What the shell calls to control it.
    std::string Command() const
    {
        return "bash " + (m_folder / "cluster.sh").string() + " " + (m_folder / "c").string();
    }
    /// One of Slurm's own programs.
    std::string Ask(const std::vector<std::string>& command) const
    {
        ProcessOptions options;
        options.environment = {Environment()};
        const ProcessResult result = RunProcess(m_user.Run(command), options);
        Expect(result);
        return result.output;
    }

private:
    ProcessResult Control(std::vector<std::string> arguments, std::vector<std::string> environment = {}) const
    {
        arguments.insert(arguments.begin(),
                         {"bash", (m_folder / "cluster.sh").string(), (m_folder / "c").string()});
        ProcessOptions options;
        options.environment = std::move(environment);
        options.folder = m_folder.Path().string();
        return RunProcess(m_user.Run(arguments), options);
    }
    static void Expect(const ProcessResult& result)
    {
        EXPECT_EQ(result.exitCode, 0) << result.output << result.messages;
    }

    TemporaryFolder m_folder;
    OtherUser m_user;
    ProcessResult m_started;
};

} // namespace Zelnor::Testing
