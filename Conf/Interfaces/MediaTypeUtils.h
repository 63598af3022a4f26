#pragma once

#include "Conf/Interfaces/IFormatFile.h"
#include "Core/Interfaces/Export.h"

#include <string>
#include <utility>
#include <vector>

/// \file
/// Groups of files and their extensions for file dialogs, and the default extensions of output files.
/// Extensions do not include the dot.

namespace Zelnor::Conf
{

/// The groups that a file dialog offers, in the order in which it shows them, each with its media type. They
/// do not include `GROUP_OTHER`.
ZELNOR_API std::vector<std::pair<IFormatFile::MediaType, std::string>> GetSupportedFormats();

/// The extensions of the group `groupId` (a `GROUP_` text, case-sensitive, also `GROUP_OTHER`), in the order
/// in which to show them. Some occur twice. `GROUP_ALL_FILES` has a single entry, "*". \throw
/// std::invalid_argument "Unknown group id"
ZELNOR_API std::vector<std::string> GetSupportedFormatExtensions(const std::string& groupId);

/// The short hint of a group, such as "*.mp3;*.flac;*.wav;..."; empty for groups without a hint.
ZELNOR_API std::string GetFormatExtentionTip(const std::string& groupId); // kept: "Extention"

/// The default extension of a file in the container `containerName`, a `FORMAT_` text. Its case is ignored:
/// each character is converted to lower case with the global locale. \throw std::invalid_argument "Unknown
/// media container name: " and the name as given
ZELNOR_API std::string GetDefaultFileExtensionForContainer(const std::string& containerName);

} // namespace Zelnor::Conf
