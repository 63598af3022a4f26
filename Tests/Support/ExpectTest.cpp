#include "Tests/Support/Expect.h"

#include <gtest/gtest-spi.h>

using Zelnor::Core::CoreException;
using Zelnor::Core::PropertyException;

namespace Zelnor::Testing
{
namespace
{

constexpr const char* kUnit = "Tests/Support/ExpectTest";

void ThrowPropertyException()
{
    ZELNOR_THROW_AT_LINE(kUnit, 7,
                         PropertyException() << TagDescription("no such child")
                                             << PropertyException::TagPropertyName("group"));
}

TEST(ExpectThrow, CopiesWhatTheExceptionCarries)
{
    const Thrown thrown = ExpectThrow<PropertyException>(ThrowPropertyException);

    EXPECT_EQ(thrown.description, "no such child");
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyName>(), "group");
    EXPECT_EQ(thrown.Get<PropertyException::TagMethodName>(), std::nullopt);
    EXPECT_EQ(thrown.file, "Tests/Support/ExpectTest");
    EXPECT_EQ(thrown.line, 7);
    EXPECT_NE(thrown.function.value_or("").find("ThrowPropertyException"), std::string::npos);
    EXPECT_NE(thrown.callStack.value_or(""), "");
    EXPECT_EQ(thrown.what, std::exception().what());
}

TEST(ExpectThrow, ReadsTheMessageOfAStandardException)
{
    const Thrown thrown = ExpectThrow<std::invalid_argument>(
        [] { ZELNOR_THROW_WITHOUT_STACK(kUnit, std::invalid_argument("bad")); });

    EXPECT_EQ(thrown.what, "bad");
    EXPECT_EQ(thrown.file, "Tests/Support/ExpectTest");
}

TEST(ExpectThrow, ReportsAnActionThatDoesNotThrow)
{
    EXPECT_NONFATAL_FAILURE(ExpectThrow<CoreException>([] {}), "none was thrown");
}

TEST(ExpectThrow, ReportsADerivedClass)
{
    EXPECT_NONFATAL_FAILURE(ExpectThrow<CoreException>(ThrowPropertyException), "expected exactly");
}

TEST(ExpectThrow, ReportsAnotherException)
{
    EXPECT_NONFATAL_FAILURE(ExpectThrow<CoreException>([] { throw std::runtime_error("other"); }), "other");
}

} // namespace
} // namespace Zelnor::Testing
