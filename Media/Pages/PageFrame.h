#pragma once

// Private to the library, not installed.

#include <string>

namespace Zelnor::Media
{

/// What differs from page to page.
struct Page
{
    std::string title; ///< any text
    std::string main;  ///< HTML, well-formed as XML
};

/// The whole document: one file that loads nothing. Its policy allows exactly the style sheet and the script
/// of the frame, so that nothing else would run or be loaded even if it came into the page. It is read
/// without the script, which only marks in a drawing what an address names and opens what is folded up.
/// Well-formed as XML, too.
std::string MakePage(const Page& page);

/// The style sheet and the script of all pages. Their hashes, "sha256-...", stand in the policy.
extern const char* const kPageStyle;
extern const char* const kPageScript;
extern const char* const kPageStyleHash;
extern const char* const kPageScriptHash;

} // namespace Zelnor::Media
