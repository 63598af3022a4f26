#include "Media/Batch/NamePattern.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor::Media;
using Zelnor::Testing::ExpectThrow;

const NameFields kOfFilm = {"film", "mp4", "web", "000007", "2026"};

void ExpectPatternRefused(const std::string& pattern, const std::string& reason)
{
    const auto thrown = ExpectThrow<PlanException>([&] { CheckNamePattern(pattern); });
    EXPECT_EQ(thrown.description, "the name pattern '" + pattern + "': " + reason);
}

TEST(NamePattern, PutsInWhatThePlaceholdersStandFor)
{
    EXPECT_EQ(ApplyNamePattern("{stem}.{ext}", kOfFilm), "film.mp4");
    EXPECT_EQ(ApplyNamePattern("{parent}-{number} {preset}.{stem}", kOfFilm), "2026-000007 web.film");
    EXPECT_EQ(ApplyNamePattern("all the same", kOfFilm), "all the same");
}

TEST(NamePattern, LeavesOutTheDotBeforeAnExtensionThatThereIsNot)
{
    EXPECT_EQ(ApplyNamePattern("{stem}.{ext}", {"film", "", "", "", ""}), "film");
}

TEST(NamePattern, NamesThePlaceholderThatIsNear)
{
    ExpectPatternRefused(
        "{stm}.{ext}",
        "unknown placeholder '{stm}' (known: {stem}, {ext}, {preset}, {number}, {parent}); did you "
        "mean 'stem'?");
}

TEST(NamePattern, RefusesBracesThatAreNotPaired)
{
    ExpectPatternRefused("{stem", "'{' without '}' after it");
    ExpectPatternRefused("stem}", "'}' without '{' before it");
}

TEST(NamePattern, RefusesSlashes)
{
    ExpectPatternRefused("../{stem}.{ext}", "it holds a '/', and all outputs are in one folder");
}

TEST(NamePattern, RefusesWhatCannotBeTheNameOfAFile)
{
    ExpectPatternRefused("", "'' cannot be the name of a file");
    ExpectPatternRefused("..", "'' cannot be the name of a file");
    const std::string longName(256, 'x');
    ExpectPatternRefused(longName, "'" + longName + "' cannot be the name of a file");
    const auto thrown = ExpectThrow<PlanException>([] {
        ApplyNamePattern("{stem}", {"a/b", "", "", "", ""});
    });
    EXPECT_EQ(thrown.description, "the name pattern '{stem}': 'a/b' cannot be the name of a file");
}

TEST(NamePattern, DoesNotLookForPlaceholdersInWhatTheyStandFor)
{
    EXPECT_EQ(ApplyNamePattern("{stem}", {"{ext}", "mp4", "", "", ""}), "{ext}");
}

} // namespace
