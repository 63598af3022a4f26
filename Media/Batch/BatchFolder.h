#pragma once

// Private to the library, not installed.

#include "Media/Running/Descriptor.h"

#include <optional>
#include <string>

namespace Zelnor::Media
{

/// Names in the folder of a batch.
namespace BatchNames
{
constexpr const char* kDocument = "batch.json";
constexpr const char* kJobs = "jobs";
constexpr const char* kResults = "results";
} // namespace BatchNames

/// The folder of a batch. Nothing outside of it is read or written, whatever links stand in it: neither its
/// folders nor its files may be links.
class BatchFolder
{
public:
    /// \throw JobException "Cannot open 'films': No such file or directory"
    explicit BatchFolder(const std::string& name);

    const std::string& GetName() const { return m_name; }
    /// Its absolute name without links.
    const std::string& GetBase() const { return m_base; }
    /// What messages call a file of it: "films/jobs/000001.json".
    std::string NameOf(const std::string& file) const { return m_name + "/" + file; }

    // \throw JobException
    std::string ReadDocument() const;
    std::string ReadJob(unsigned int number) const;
    /// Nothing when there is none.
    std::optional<std::string> ReadResult(unsigned int number) const;
    /// Replaces the result as a whole. One process at a time may do so: the one that has locked the job.
    /// \throw RunException
    void WriteResult(unsigned int number, const std::string& text) const;

    enum class LockKind
    {
        Shared,
        Exclusive,
    };
    /// Locks the batch for as long as the descriptor is open. Where the file system does not know locks, none
    /// is taken.
    /// \throw RunException "films is being run by another process"
    Descriptor Lock(LockKind kind) const;
    /// The same for one job. Looking whether it is locked takes the lock for a moment, so it is tried for a
    /// second.
    Descriptor LockJob(unsigned int number) const;
    /// Whether a process that lives has locked the job.
    bool IsJobLocked(unsigned int number) const;

private:
    Descriptor OpenFolderIn(const char* name) const;
    std::string ReadFile(const Descriptor& folder, const std::string& file, const std::string& name) const;
    Descriptor OpenToLock(const Descriptor& folder, const std::string& file, const std::string& name) const;

    std::string m_name;
    std::string m_base;
    Descriptor m_folder;
    Descriptor m_jobs;
    Descriptor m_results;
};

/// "000001.json"
std::string BatchFileName(unsigned int number);

} // namespace Zelnor::Media
