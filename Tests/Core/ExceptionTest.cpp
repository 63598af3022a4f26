#include "Core/Interfaces/Exception.h"

#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>

namespace Zelnor
{

namespace
{

constexpr const char* kUnit = "Tests/Core/ExceptionTest";

using Core::CoreException;
using Core::MethodIsNotApplicable;
using Core::PropertyException;
using Testing::ExpectThrow;
using Testing::Thrown;

template <class E>
constexpr bool kIsPlainException =
    std::is_default_constructible_v<E>&& std::is_copy_constructible_v<E>&& std::has_virtual_destructor_v<E>;

static_assert(kIsPlainException<Exception> && kIsPlainException<CoreException> &&
              kIsPlainException<PropertyException> && kIsPlainException<MethodIsNotApplicable>);
static_assert(std::is_same_v<TagDescription::value_type, std::string>);
static_assert(std::is_same_v<TagCallStack::value_type, std::string>);
static_assert(std::is_same_v<PropertyException::TagPropertyName::value_type, std::string>);
static_assert(std::is_same_v<PropertyException::TagPropertyType::value_type, PropertyTypes>);
static_assert(std::is_same_v<PropertyException::TagMethodName::value_type, std::string>);

// Two bases that derive from one class share it only if they derive virtually.
template <class Base>
struct First : Base
{};
template <class Base>
struct Second : Base
{};
template <class Base>
struct Both : First<Base>, Second<Base>
{};
static_assert(std::is_convertible_v<Both<CoreException>*, Exception*>);
static_assert(std::is_convertible_v<Both<PropertyException>*, CoreException*>);
static_assert(!std::is_convertible_v<Both<MethodIsNotApplicable>*, PropertyException*>);
static_assert(std::is_convertible_v<Both<Exception>*, std::exception*>);
static_assert(std::is_convertible_v<Both<Exception>*, boost::exception*>);

[[noreturn]] void ThrowDescribed(const std::string& description)
{
    PropertyException exception;
    exception << TagDescription(description) << PropertyException::TagPropertyType(PROPERTY_TYPE_RATIO);
    ZELNOR_THROW(kUnit, exception);
}

template <class Base>
bool CatchAs()
{
    try
    {
        ZELNOR_THROW(kUnit, MethodIsNotApplicable());
    }
    catch (const Base&)
    {
        return true;
    }
    catch (...)
    {
        return false;
    }
}

} // namespace

TEST(Exception, IsCaughtByEachOfItsBases)
{
    EXPECT_TRUE(CatchAs<MethodIsNotApplicable>());
    EXPECT_TRUE(CatchAs<PropertyException>());
    EXPECT_TRUE(CatchAs<CoreException>());
    EXPECT_TRUE(CatchAs<Exception>());
    EXPECT_TRUE(CatchAs<std::exception>());
    EXPECT_TRUE(CatchAs<boost::exception>());
    EXPECT_FALSE(CatchAs<std::runtime_error>());
}

TEST(Exception, WhatIsTheStandardTextAndNotTheDescription)
{
    const Thrown thrown = ExpectThrow<PropertyException>([] { ThrowDescribed("the description"); });
    EXPECT_EQ(thrown.description, "the description");
    EXPECT_EQ(thrown.what.find("the description"), std::string::npos);
    EXPECT_STREQ(MethodIsNotApplicable().what(), std::exception().what());
}

TEST(Exception, AddStackReturnsTheSameObjectWithTheStackOnIt)
{
    const CoreException exception;
    EXPECT_EQ(&exception, &AddStack(exception));
    const std::string* const stack = boost::get_error_info<TagCallStack>(exception);
    ASSERT_NE(stack, nullptr);
    EXPECT_FALSE(stack->empty());
}

TEST(Exception, AddStackPutsTheStackIntoAStandardMessage)
{
    const std::invalid_argument exception("wrong");
    const auto made = AddStack(exception);
    static_assert(std::is_same_v<decltype(AddStack(exception)), std::invalid_argument>);
    EXPECT_STREQ(exception.what(), "wrong");
    const std::string message = made.what();
    EXPECT_EQ(message.find("wrong\n"), 0u);
    EXPECT_GT(message.size(), std::string("wrong\n").size());
    static_assert(std::is_same_v<decltype(AddStack(std::logic_error(""))), std::logic_error>);
}

TEST(Exception, ThrowRecordsUnitLineFunctionAndStack)
{
    int line = 0;
    const Thrown thrown = ExpectThrow<CoreException>([&] {
        line = __LINE__ + 1;
        ZELNOR_THROW(kUnit, CoreException());
    });
    EXPECT_EQ(thrown.file, "Tests/Core/ExceptionTest");
    EXPECT_EQ(thrown.line, line);
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
    const Thrown named = ExpectThrow<PropertyException>([] { ThrowDescribed("x"); });
#ifdef __clang__
    const std::string signature = "void Zelnor::(anonymous namespace)::ThrowDescribed(const std::string &)";
#else
    const std::string signature = "void Zelnor::{anonymous}::ThrowDescribed(const std::string&)";
#endif
    EXPECT_EQ(named.function, signature);
    EXPECT_NE(named.diagnostics.find(signature), std::string::npos);
}

TEST(Exception, ThrowOfAStandardExceptionRecordsTheSame)
{
    const Thrown thrown =
        ExpectThrow<std::invalid_argument>([] { ZELNOR_THROW(kUnit, std::invalid_argument("wrong")); });
    EXPECT_EQ(thrown.what.find("wrong\n"), 0u);
    EXPECT_EQ(thrown.file, "Tests/Core/ExceptionTest");
    EXPECT_GT(thrown.line.value_or(0), 0);
    EXPECT_NE(thrown.diagnostics.find(thrown.function.value_or("none")), std::string::npos);
}

TEST(Exception, ThrowMayFixTheLine)
{
    EXPECT_EQ(ExpectThrow<CoreException>([] { ZELNOR_THROW_AT_LINE(kUnit, 4711, CoreException()); }).line,
              4711);
}

TEST(Exception, ThrowMayLeaveTheMessageAlone)
{
    const Thrown thrown = ExpectThrow<std::out_of_range>(
        [] { ZELNOR_THROW_WITHOUT_STACK(kUnit, std::out_of_range("key not found")); });
    EXPECT_EQ(thrown.what, "key not found");
    EXPECT_EQ(thrown.file, "Tests/Core/ExceptionTest");
    EXPECT_GT(thrown.line.value_or(0), 0);
}

TEST(Exception, RecordedUnitIsTheOneThatWasGivenWhereverTheThrowStands)
{
    const Thrown thrown =
        ExpectThrow<CoreException>([] { ZELNOR_THROW("Core/Interfaces/Elsewhere", CoreException()); });
    EXPECT_EQ(thrown.file, "Core/Interfaces/Elsewhere");
    const Thrown atLine =
        ExpectThrow<CoreException>([] { ZELNOR_THROW_AT_LINE("Some/Unit", 4711, CoreException()); });
    EXPECT_EQ(atLine.file, "Some/Unit");
    const Thrown withoutStack = ExpectThrow<std::out_of_range>(
        [] { ZELNOR_THROW_WITHOUT_STACK("Another/Unit", std::out_of_range("key not found")); });
    EXPECT_EQ(withoutStack.file, "Another/Unit");
}

TEST(Exception, CopyThroughBoostCurrentExceptionKeepsTags)
{
    boost::exception_ptr copy;
    try
    {
        ThrowDescribed("kept");
    }
    catch (...)
    {
        copy = boost::current_exception();
    }
    const Thrown thrown = ExpectThrow<PropertyException>([&] { boost::rethrow_exception(copy); });
    EXPECT_EQ(thrown.description, "kept");
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyType>(), PROPERTY_TYPE_RATIO);
    EXPECT_EQ(thrown.file, "Tests/Core/ExceptionTest");
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
}

TEST(Exception, RethrownInAnotherThreadKeepsTags)
{
    boost::exception_ptr copy;
    std::thread([&] {
        try
        {
            ThrowDescribed("from the thread");
        }
        catch (...)
        {
            copy = boost::current_exception();
        }
    }).join();
    EXPECT_EQ(ExpectThrow<PropertyException>([&] { boost::rethrow_exception(copy); }).description,
              "from the thread");
}

TEST(Exception, ACopyKeepsTags)
{
    PropertyException original;
    original << TagDescription("kept");
    const PropertyException copy(original);
    const std::string* const description = boost::get_error_info<TagDescription>(copy);
    ASSERT_NE(description, nullptr);
    EXPECT_EQ(*description, "kept");
}

} // namespace Zelnor
