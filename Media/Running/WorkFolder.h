#pragma once

// Private to the library, not installed.

#include "Media/Running/Descriptor.h"

#include <sys/types.h>

#include <string>

namespace Zelnor::Media
{

/// A private folder for what a run writes until it is complete, named ".zelnor-" and six letters or digits,
/// with permissions for its owner alone. It is locked, so that it can be told from one that a killed run has
/// left. What is in it and has one of the names below disappears with it.
class WorkFolder
{
public:
    /// The file to make.
    static constexpr const char* kOutput = "output";
    /// Beginning of the names of the files that the first pass leaves for the second.
    static constexpr const char* kPassLog = "pass-";
    /// A file that is locked as well: other machines do not see locks of folders of a network file system.
    static constexpr const char* kLock = "lock";

    /// Makes it, with an empty file to make in it.
    /// \throw std::system_error
    WorkFolder(const std::string& parent, mode_t outputMode);
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    /// The full name of a file in it. It leads there even if somebody puts another folder in its place.
    std::string NameOf(const std::string& file) const { return m_path + "/" + file; }
    /// The folder itself and the one that it is in, whatever stands under their names by now.
    int Get() const { return m_folder.Get(); }
    int GetParent() const { return m_parent.Get(); }

private:
    bool Make();
    bool MakeLock();
    void MakeOutput(mode_t mode) const;

    std::string m_name;
    Descriptor m_parent;
    Descriptor m_folder;
    Descriptor m_lock;
    std::string m_path;
};

/// Removes the private folders of killed runs from a folder. One that is in use, belongs to another user, has
/// other permissions or holds anything that a run does not make stays.
void RemoveAbandonedWorkFolders(const std::string& parent);

} // namespace Zelnor::Media
