#pragma once

// Private to the library, not installed.

#include <string>

namespace Zelnor::Media
{

/// Whether two codes of ISO 639-2 mean the same language, whatever their case: "deu" and "ger".
bool IsSameLanguage(const std::string& one, const std::string& other);

/// The other code of ISO 639-2 for the language; empty for most, which have one.
std::string OtherLanguageCode(const std::string& code);

} // namespace Zelnor::Media
