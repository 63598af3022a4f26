#pragma once

#include "Conf/Interfaces/IFormatFile.h"
#include "Core/Interfaces/Export.h"

#include <string>
#include <utility>
#include <vector>

/// \file
/// What file dialogs and writers of output files ask: which groups of files there are, which extensions they
/// have, and which extension a container's file gets. Extensions have no dots.

namespace Zelnor::Conf
{

/// The groups that a file dialog offers, in its order, with what they hold. `GROUP_OTHER` is not among them.
ZELNOR_API std::vector<std::pair<IFormatFile::MediaType, std::string>> GetSupportedFormats();

/// The extensions of the group `groupId` (a `GROUP_` text, case-sensitive; `GROUP_OTHER` too), in the order
/// to show. Some stand twice. `GROUP_ALL_FILES` has the one entry "*".
/// \throw std::invalid_argument "Unknown group id"
ZELNOR_API std::vector<std::string> GetSupportedFormatExtensions(const std::string& groupId);

/// A short hint such as "*.mp3;*.flac;*.wav;..." for the groups that have one, else an empty string.
ZELNOR_API std::string GetFormatExtentionTip(const std::string& groupId); // kept: "Extention"

/// The extension that a file of the container `containerName` gets (a `FORMAT_` text in any letter case, as
/// the global locale lower-cases it).
/// \throw std::invalid_argument "Unknown media container name: " and the name as given
ZELNOR_API std::string GetDefaultFileExtensionForContainer(const std::string& containerName);

} // namespace Zelnor::Conf
