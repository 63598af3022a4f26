#pragma once

// Private to the library, not installed.

#include "Media/Running/WorkFolder.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Zelnor::Media
{

/// A file that another program writes and that appears under its name only when it is complete. Until then it
/// is in a private folder beside it, which disappears with this object. A symbolic link is followed, and the
/// file that is replaced leaves its permissions and, as far as the process may give files away, its owner and
/// group, but no set-user-ID and the like. `/dev/null` and a pipe are written to directly.
///
/// With a scratch folder, the other program writes in a private folder there, and the complete file is copied
/// into the one beside the target.
class TargetFile
{
public:
    /// \param scratch  the scratch folder; empty: none
    /// \throw RunException when the file is there and must not be replaced, or cannot be made
    TargetFile(const std::string& name, bool overwrite, const std::string& scratch = {});
    ~TargetFile();
    TargetFile(const TargetFile&) = delete;
    TargetFile& operator=(const TargetFile&) = delete;

    /// Whether it is written to as it stands, and not replaced.
    bool IsDirect() const { return m_isDirect; }
    /// What to write to, as an absolute name.
    const std::string& GetWorkName() const { return m_workName; }
    /// Beginning of the names of the files that one pass may leave for the next, until `Commit`.
    std::string GetPassLog() const { return m_passFolder->NameOf(WorkFolder::kPassLog); }
    /// Copies the file out of the scratch folder, which takes a while. `Commit` and `KeepAside` do so when it
    /// was not done before.
    /// \returns false when it was cancelled
    /// \throw RunException
    bool LeaveScratch(const std::function<bool()>& isCancelled);
    /// Puts the file in place, safely on the disk.
    /// \throw RunException when another one has appeared there that must not be replaced
    void Commit();
    /// Puts the file beside the target instead: "out.unverified.mp4" for "out.mp4", with a number before the
    /// extension when there is such a file.
    /// \returns its name
    /// \throw RunException
    std::string KeepAside();

private:
    void Open(const std::string& folder, mode_t mode);
    void OpenScratch(const std::string& folder);
    /// Makes sure that the file is on the disk, with the access of the one that it replaces.
    void Finish() const;

    std::string m_name;   ///< as given, for messages
    std::string m_target; ///< what a link leads to
    std::string m_workName;
    bool m_overwrite;
    bool m_isDirect = false;
    std::optional<struct stat> m_replaced; ///< the file that is replaced
    std::unique_ptr<WorkFolder> m_folder;
    std::unique_ptr<WorkFolder> m_scratch;    ///< null: none, or not needed any more
    const WorkFolder* m_passFolder = nullptr; ///< one of them
};

/// Whether a file that is not a regular one may be a target: `/dev/null`, which takes what nobody needs, and
/// a pipe, at whose other end somebody reads.
bool MayBeWrittenDirectly(const struct stat& status);

/// Why something that is open somewhere, as the pipe that "/dev/stdout" may be or a file that was removed,
/// cannot be a target.
inline constexpr const char* kNamelessText = "it has no name of its own";

/// Whether what is there under a name is only open and has no name of its own: FFmpeg, which has other files
/// open, would not find it.
bool IsNameless(const std::string& name);

/// Whether a name that means nothing for that reason cannot be given to a file either, which is only noticed
/// when the file is complete.
bool CannotBeMade(int reason);

/// Refuses a target that is there and must not be replaced.
/// \throw RunException
void CheckReplaceable(const std::string& name, bool overwrite);

} // namespace Zelnor::Media
