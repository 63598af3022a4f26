#pragma once

#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <vector>

/// \file
/// What holds for every page, whatever is shown on it.

namespace Zelnor::Testing
{

/// What the first group of the expression matches, each time that it occurs.
inline std::vector<std::string> AllMatches(const std::string& text, const std::regex& pattern)
{
    std::vector<std::string> found;
    for (auto match = std::sregex_iterator(text.begin(), text.end(), pattern);
         match != std::sregex_iterator(); ++match)
    {
        found.push_back((*match)[1]);
    }
    return found;
}

inline std::vector<std::string> AllMatches(const std::string& text, const std::string& expression)
{
    return AllMatches(text, std::regex(expression));
}

/// Which elements, attributes and addresses a page may have. An allow-list: what a text of a job would add is
/// not on it.
inline void ExpectOnlyWhatPagesHave(const std::string& html)
{
    static const std::set<std::string> kElements = {
        "a",     "body",  "caption", "circle", "code",    "defs",  "details", "div",   "figure",  "h1",
        "h2",    "h3",    "head",    "html",   "li",      "main",  "marker",  "meta",  "ol",      "p",
        "path",  "pre",   "rect",    "script", "section", "span",  "strong",  "style", "summary", "svg",
        "table", "tbody", "td",      "text",   "th",      "thead", "title",   "tr",    "ul"};
    static const std::set<std::string> kAttributes = {"aria-label",  "charset",
                                                      "class",       "colspan",
                                                      "content",     "cx",
                                                      "cy",          "data-key",
                                                      "d",           "height",
                                                      "href",        "http-equiv",
                                                      "id",          "lang",
                                                      "markerUnits", "lengthAdjust",
                                                      "marker-end",  "markerHeight",
                                                      "markerWidth", "name",
                                                      "open",        "orient",
                                                      "r",           "refX",
                                                      "refY",        "role",
                                                      "rx",          "scope",
                                                      "tabindex",    "text-anchor",
                                                      "textLength",  "viewBox",
                                                      "width",       "x",
                                                      "xmlns",       "y"};
    static const std::regex kAttribute(" ([^ =\"]+)=\"[^\"]*\"");
    for (const std::string& element : AllMatches(html, "<([A-Za-z][^ />]*)"))
    {
        EXPECT_EQ(kElements.count(element), 1U) << element;
    }
    for (const std::string& tag : AllMatches(html, "<([A-Za-z][^>]*)>"))
    {
        for (const std::string& attribute : AllMatches(tag, kAttribute))
        {
            EXPECT_EQ(kAttributes.count(attribute), 1U) << attribute << " in " << tag;
        }
    }
    for (const std::string& address : AllMatches(html, "href=\"([^\"]*)\""))
    {
        EXPECT_EQ(address.substr(0, 1), "#") << address;
    }
    EXPECT_EQ(AllMatches(html, "(<script)").size(), 1U);
    EXPECT_EQ(AllMatches(html, "(<style)").size(), 1U);
}

/// Each link leads to something, and no two things have the same name.
inline void ExpectLinksLeadSomewhere(const std::string& html)
{
    std::set<std::string> anchors;
    for (const std::string& anchor : AllMatches(html, " id=\"([^\"]*)\""))
    {
        EXPECT_TRUE(anchors.insert(anchor).second) << anchor;
    }
    for (const std::string& address : AllMatches(html, "href=\"#([^\"]*)\""))
    {
        EXPECT_EQ(anchors.count(address), 1U) << address;
    }
}

/// An XML parser, which forgives nothing, takes the page.
inline void ExpectWellFormed(const std::string& html)
{
    ProcessOptions options;
    options.input = html;
    const ProcessResult result = RunProcess({"xmllint", "--noout", "--nonet", "--huge", "-"}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.messages, "");
}

inline void ExpectGoodPage(const std::string& html)
{
    ExpectOnlyWhatPagesHave(html);
    ExpectLinksLeadSomewhere(html);
    ExpectWellFormed(html);
}

} // namespace Zelnor::Testing
