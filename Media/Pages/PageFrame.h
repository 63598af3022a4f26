#pragma once

// Private to the library, not installed.

#include <string>

namespace Zelnor::Media
{

/// A style sheet or a script, and the hash by which the policy of a page allows it: "sha256-...".
struct PageAsset
{
    const char* text;
    const char* hash;
};

/// The style sheet of all pages.
extern const PageAsset kPageStyle;
/// Marks in a drawing what an address names, and opens what is folded up.
extern const PageAsset kDrawingScript;
/// Sorts and filters the rows of a table of jobs, and makes the controls for that.
extern const PageAsset kTableScript;

/// What differs from page to page.
struct Page
{
    std::string title; ///< any text
    std::string main;  ///< HTML, well-formed as XML
    const PageAsset* script = &kDrawingScript;
};

/// The whole document: one file that loads nothing. Its policy allows exactly the style sheet and the script
/// of the page, so that nothing else would run or be loaded even if it came into the page. It is read
/// without the script. Well-formed as XML, too.
std::string MakePage(const Page& page);

} // namespace Zelnor::Media
