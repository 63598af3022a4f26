#pragma once

// Private to the library, not installed.

#include "Media/Planning/OutputContents.h"

#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// Whether a member of a target's list of chapters is one.
bool IsChapter(const Core::Property& entry);

/// Reads the keys of a target's record that say what it holds beside its streams. A value that is not as it
/// must be is a fault.
class TargetReader
{
public:
    /// \param hasSources  whether the output's inputs are known; if not, what only they can tell is not asked
    TargetReader(const OutputFile& output, std::vector<TargetFault>& faults, bool hasSources = true)
        : m_output(output), m_faults(faults), m_hasSources(hasSources)
    {}

    /// Nothing when the record does not say.
    std::optional<std::vector<MediaChapter>> Chapters();
    /// Indexes of streams of the first source; nothing when the record does not say.
    std::optional<std::vector<unsigned int>> Attachments();

private:
    void AddFault(const std::string& key, const std::string& reason) { m_faults.push_back({key, reason}); }
    const Core::Property* List(const std::string& key);
    bool IsAttachment(const Core::Property& entry) const;

    const OutputFile& m_output;
    std::vector<TargetFault>& m_faults;
    bool m_hasSources;
};

} // namespace Zelnor::Media
