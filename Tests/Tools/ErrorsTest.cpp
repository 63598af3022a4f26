#include "Tools/zconf/Console/Errors.h"

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

} // namespace
