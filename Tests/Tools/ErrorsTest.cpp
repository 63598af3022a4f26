#include "Tools/zconf/Console/Errors.h"

#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Core/Interfaces/DataStream.h"

#include <gtest/gtest.h>

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Tool;

template <class Action>
std::string DescriptionOf(Action action)
{
    try
    {
        action();
    }
    catch (...)
    {
        return Describe(std::current_exception());
    }
    return "nothing was thrown";
}

TEST(Describe, GivesTheWholeMessageOfTheToolsOwnErrors)
{
    EXPECT_EQ(DescriptionOf([] { throw ToolError("'two\nlines' is not a name"); }),
              "'two\nlines' is not a name");
}

TEST(Describe, GivesTheDescriptionOfALibrarysException)
{
    EXPECT_EQ(DescriptionOf([] { Core::FileDataInput::Create(ioPath("no/such/file")); }),
              "Cannot open 'no/such/file': No such file or directory");
}

TEST(Describe, GivesTheFirstLineOfOtherExceptions)
{
    EXPECT_EQ(DescriptionOf([] { throw std::runtime_error("what\n  call stack"); }), "what");
    EXPECT_EQ(DescriptionOf([] { throw std::bad_alloc(); }), "Not enough memory");
    EXPECT_EQ(DescriptionOf([] { throw 7; }), "Failed for an unknown reason");
}

TEST(Describe, IsNeverEmpty)
{
    // A failed look-up of a pixel format has an empty message.
    EXPECT_EQ(DescriptionOf([] { PixFmtDescription::Find(static_cast<PixFmt>(1)); }).substr(0, 12),
              "Failed with ");
    EXPECT_EQ(DescriptionOf([] { throw std::runtime_error("\nsecond line"); }).substr(0, 12), "Failed with ");
}

} // namespace
