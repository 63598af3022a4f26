#pragma once

// Private to the library, not installed.

#include <cstddef>
#include <string>
#include <string_view>

namespace Zelnor::Media
{

/// The text as a page shows it: backslashes, invisible controls (`Core::IsInvisibleControl`), characters that
/// HTML or XML may not hold and bytes that are not UTF-8 are written as C escapes, as
/// `Core::PrintPropertyValue` does, so that no text looks like another or changes what stands around it.
std::string ShownText(std::string_view text);

/// That text for the content of an element, or for an attribute value in double quotes; of HTML, XML and SVG.
std::string HtmlText(std::string_view text);

/// The first `most` characters of a shown text; "…" stands for what is left out.
std::string Shortened(const std::string& shown, std::size_t most);

/// Appends `text` escaped for HTML. What `ShownText` does to it was done before.
void AppendHtml(std::string_view text, std::string& html);

} // namespace Zelnor::Media
