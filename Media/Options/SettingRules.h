#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

/// \file
/// What the settings of a codec's record must be, in a job as in a preset.

namespace Zelnor::Media
{

/// Whether the vocabulary of a codec's record has the key.
bool IsSettingKnown(const std::string& key);

/// All keys that it has.
std::vector<std::string> KnownSettings();

/// What a value of the key must be, as messages say it; empty for keys that are not known.
std::string ExpectedOfSetting(const std::string& key);

/// What is said of a key that stands in a record again.
inline constexpr const char* kRepeatedText = "appears more than once";

/// What is said of a key that it does not have: "unknown setting 'bitrat'; did you mean 'bitrate'?"
std::string UnknownSettingText(const std::string& key);

/// Whether a stream that is copied uses the setting.
bool IsSettingForCopies(const std::string& key);

/// Why the setting is not what its key asks for: another kind, out of range, a text that no argument of a
/// program can hold. Empty when it is right, and for keys that are not known. Children are not looked at.
std::string FindSettingFault(const Core::Property& setting);

/// A child of a group that is not as it must be.
struct ChildFault
{
    const Core::Property* child;
    std::string reason;
};

/// What is wrong with the names, kinds and numbers of a group of options or metadata.
std::vector<ChildFault> FindChildFaults(const Core::Property& group);

/// Whether the text has a NUL byte, at which an argument of a program would end.
bool HasNul(const std::string& text);

} // namespace Zelnor::Media
