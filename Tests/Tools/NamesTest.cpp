#include "Tools/zconf/Console/Names.h"

#include "Tools/zconf/Console/Errors.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor::Tool;
using Strings = std::vector<std::string>;

std::string UnknownName(const std::string& name, const Strings& known)
{
    try
    {
        ThrowUnknownName("codec", name, known);
    }
    catch (const ToolError& error)
    {
        return error.what();
    }
}

TEST(ThrowUnknownName, SuggestsWhatIsNear)
{
    EXPECT_EQ(UnknownName("h246", {"h264"}), "'h246' is not a known codec; did you mean 'h264'?");
    EXPECT_EQ(UnknownName("h26", {"h264", "h265"}),
              "'h26' is not a known codec; did you mean 'h264' or 'h265'?");
    EXPECT_EQ(UnknownName("smell", {"h264"}), "'smell' is not a known codec");
    EXPECT_EQ(UnknownName("it's'", {}), "'it's'' is not a known codec");
}

} // namespace
