#pragma once

// Private to the library, not installed.

#include <sys/types.h>

#include <optional>
#include <string>

namespace Zelnor::Media
{

/// A file that another program writes and that appears under its name only when it is complete. Until then it
/// is a file beside it, which disappears unless `Commit` is called. A symbolic link is followed, the file
/// that is replaced leaves its permissions, and a device or a pipe is written to directly.
class TargetFile
{
public:
    /// \throw RunException when the file is there and must not be replaced, or cannot be made
    TargetFile(const std::string& name, bool overwrite);
    ~TargetFile();
    TargetFile(const TargetFile&) = delete;
    TargetFile& operator=(const TargetFile&) = delete;

    /// What to write to, as an absolute name.
    const std::string& GetWorkName() const { return m_workName; }
    /// Puts the file in place, safely on the disk. \throw RunException when another one has appeared there
    /// that must not be replaced
    void Commit();

private:
    std::string m_name;   ///< as given, for messages
    std::string m_target; ///< what a link leads to
    std::string m_workName;
    bool m_overwrite;
    bool m_isTemporary = false;
    std::optional<mode_t> m_permissions; ///< of the file that is replaced
};

/// A folder for the files of a run, which is gone afterwards.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& GetName() const { return m_name; }

private:
    std::string m_name;
};

/// Refuses a target that is there and must not be replaced. \throw RunException
void CheckReplaceable(const std::string& name, bool overwrite);

} // namespace Zelnor::Media
