#pragma once

// Private to the library, not installed.

#include <string_view>

/// \file
/// The options of FFmpeg's encoders and decoders that a job or a preset may set by FFmpeg's names. These are
/// lists of what is allowed: an option that is not here is refused, whatever it may do.

namespace Zelnor::Media
{

/// Whether an option may be set whose value is a number, flags, or a name that FFmpeg gives to a number.
bool IsAllowedForEncoders(std::string_view option);
bool IsAllowedForDecoders(std::string_view option);

/// Whether a flag of an option that every codec has may be set. Of the others, all may.
bool IsAllowedFlag(std::string_view option, std::string_view flag);

/// An option of an encoder whose value is a text.
struct TextRule
{
    std::string_view encoder; ///< beginning of its name
    std::string_view option;
    std::string_view words;      ///< beginning of the names of the vocabulary's constants; empty: any text
    std::string_view characters; ///< what the text may hold beside digits; of words, what is between them
    const char* expected;
};

/// Null when the text may not be set.
const TextRule* FindTextRule(std::string_view encoder, std::string_view option);

/// A parameter of a library that may only be set to some words, because others would name a file.
struct WordRule
{
    std::string_view parameter;
    std::string_view words; ///< between which there is a blank
    const char* expected;

    bool Accepts(std::string_view word) const;
};

/// Null when every word may be set.
const WordRule* FindWordRule(std::string_view parameter);

/// An option of an encoder that holds parameters of its library: "keyint=50:ref=4".
struct ParametersRule
{
    std::string_view encoder; ///< beginning of its name
    std::string_view option;
    const char* library;
    bool (*isNumber)(std::string_view parameter); ///< whether it may be set, to a number
    bool (*isWord)(std::string_view parameter);   ///< whether it may be set, to a word
};

/// Null when the option does not hold parameters, or may not be set.
const ParametersRule* FindParametersRule(std::string_view encoder, std::string_view option);

} // namespace Zelnor::Media
