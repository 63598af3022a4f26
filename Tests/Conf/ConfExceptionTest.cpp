#include "Conf/Interfaces/ConfException.h"

#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"
#include "Core/Interfaces/Property.h"
#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Zelnor::Conf
{
namespace
{

constexpr const char* kUnit = "Tests/Conf/ConfExceptionTest";

using Core::CoreException;
using Core::MethodIsNotApplicable;
using Core::PropertyException;
using Testing::ExpectThrow;
using Testing::Thrown;

/// A pointer to a virtual base cannot be cast back down; that is how a caller can tell.
template <class Base, class Derived, class = void>
constexpr bool CastsDown = false;
template <class Base, class Derived>
constexpr bool CastsDown<Base, Derived, std::void_t<decltype(static_cast<Derived*>(std::declval<Base*>()))>> =
    true;

template <class Derived, class Base>
constexpr bool IsPublicBase = std::is_base_of_v<Base, Derived>&& std::is_convertible_v<Derived*, Base*>;
template <class Derived, class Base>
constexpr bool DerivesVirtually = IsPublicBase<Derived, Base> && !CastsDown<Base, Derived>;
template <class Derived, class Base>
constexpr bool DerivesPlainly = IsPublicBase<Derived, Base>&& CastsDown<Base, Derived>;

static_assert(DerivesVirtually<Exception, std::exception>);
static_assert(DerivesVirtually<Exception, boost::exception>);
static_assert(DerivesVirtually<CoreException, Exception>);
static_assert(DerivesVirtually<PropertyException, CoreException>);
static_assert(DerivesPlainly<MethodIsNotApplicable, PropertyException>);
static_assert(DerivesVirtually<ConfException, Exception>);
static_assert(DerivesVirtually<FormatException, ConfException>);
static_assert(DerivesVirtually<PresetException, ConfException>);
static_assert(DerivesVirtually<HelperException, ConfException>);
static_assert(DerivesVirtually<ConstraintException, ConfException>);
static_assert(DerivesPlainly<ConstraintIsNotApplicableForTypeException, ConstraintException>);
static_assert(DerivesPlainly<CheckedPropertyHasDifferentTypeException, ConstraintException>);
static_assert(DerivesVirtually<ProfileException, ConfException>);
static_assert(DerivesPlainly<LinkExists, ProfileException>);
static_assert(DerivesPlainly<LinkNotFound, ProfileException>);
static_assert(DerivesPlainly<NodeNotFound, ProfileException>);
static_assert(DerivesPlainly<BadJson, ProfileException>);

// The two trees meet in Exception only, and siblings are no kin.
static_assert(!std::is_base_of_v<CoreException, ConfException>);
static_assert(!std::is_base_of_v<ConfException, MethodIsNotApplicable>);
static_assert(!std::is_base_of_v<ProfileException, FormatException>);
static_assert(!std::is_base_of_v<ConstraintException, PresetException>);
static_assert(!std::is_base_of_v<LinkExists, LinkNotFound>);

template <class... E>
constexpr bool ArePlainValues = ((std::is_default_constructible_v<E> && std::is_copy_constructible_v<E> &&
                                  std::has_virtual_destructor_v<E> &&
                                  std::is_nothrow_destructible_v<E>)&&...);
static_assert(
    ArePlainValues<Exception, CoreException, PropertyException, MethodIsNotApplicable, ConfException,
                   FormatException, PresetException, HelperException, ConstraintException,
                   ConstraintIsNotApplicableForTypeException, CheckedPropertyHasDifferentTypeException,
                   ProfileException, LinkExists, LinkNotFound, NodeNotFound, BadJson>);

// No members: everything is in the tags.
static_assert(sizeof(FormatException) == sizeof(PresetException));
static_assert(sizeof(BadJson) == sizeof(ProfileException));
static_assert(sizeof(CheckedPropertyHasDifferentTypeException) == sizeof(ConstraintException));

static_assert(std::is_same_v<TagDescription::value_type, std::string>);
static_assert(std::is_same_v<TagCallStack::value_type, std::string>);
static_assert(std::is_same_v<PropertyException::TagPropertyName::value_type, std::string>);
static_assert(std::is_same_v<PropertyException::TagPropertyType::value_type, PropertyTypes>);
static_assert(std::is_same_v<PropertyException::TagMethodName::value_type, std::string>);
static_assert(
    std::is_same_v<ProfileException::TagRequestedLink::value_type, std::pair<long long, long long>>);
static_assert(std::is_same_v<ProfileException::TagRequestedNodeId::value_type, long long>);
static_assert(std::is_same_v<ProfileException::TagJsonBadStructure::value_type, std::string>);

/// Whether a handler for `Handled` catches what `thrower` throws.
template <class Handled, class Thrower>
bool Catches(Thrower thrower)
{
    try
    {
        thrower();
    }
    catch (const Handled&)
    {
        return true;
    }
    catch (...)
    {}
    return false;
}

void ThrowLinkExists()
{
    ZELNOR_THROW(kUnit, LinkExists() << ProfileException::TagRequestedLink(std::pair(1LL, 2LL)));
}
void ThrowMethodIsNotApplicable() { Core::Property("five", 5LL).SetChildT("child", 5LL); }
void MissALayout() { LayoutRecord::Find(9); }
void MissAPlane() { PixFmtDescription::Find(PIX_FMT_RGB24)->GetPlanWidth(1, 3); }

TEST(ConfException, ALinkThatExistsIsCaughtByAllItsBases)
{
    EXPECT_TRUE(Catches<LinkExists>(ThrowLinkExists));
    EXPECT_TRUE(Catches<ProfileException>(ThrowLinkExists));
    EXPECT_TRUE(Catches<ConfException>(ThrowLinkExists));
    EXPECT_TRUE(Catches<Exception>(ThrowLinkExists));
    EXPECT_TRUE(Catches<std::exception>(ThrowLinkExists));
    EXPECT_TRUE(Catches<boost::exception>(ThrowLinkExists));
    EXPECT_FALSE(Catches<FormatException>(ThrowLinkExists));
    EXPECT_FALSE(Catches<CoreException>(ThrowLinkExists));
}

TEST(ConfException, ARefusedMethodIsACoreFailureAndNoneOfTheConfiguration)
{
    EXPECT_TRUE(Catches<PropertyException>(ThrowMethodIsNotApplicable));
    EXPECT_TRUE(Catches<Exception>(ThrowMethodIsNotApplicable));
    EXPECT_FALSE(Catches<ConfException>(ThrowMethodIsNotApplicable));
}

/// Looks into the object: the compiler may not conclude its class from its declaration.
template <class E>
void ExpectType(const E& object)
{
    const Exception* volatile address = &object;
    const Exception& seen = *address;
    EXPECT_EQ(typeid(seen), typeid(E));
}

TEST(ConfException, EveryExportedObjectIsOfItsOwnClass)
{
    ExpectType<ConfException>(exportDummyException);
    ExpectType<PresetException>(exportDummyException1);
    ExpectType<ConstraintException>(exportDummyException2);
    ExpectType<ConstraintIsNotApplicableForTypeException>(exportDummyException3);
    ExpectType<CheckedPropertyHasDifferentTypeException>(exportDummyException4);
    ExpectType<HelperException>(exportDummyException5);
    ExpectType<FormatException>(exportDummyException6);
    ExpectType<ProfileException>(exportDummyException7);
    ExpectType<NodeNotFound>(exportDummyException8);
    ExpectType<LinkExists>(exportDummyException9);
    ExpectType<LinkNotFound>(exportDummyException10);
    ExpectType<BadJson>(exportDummyException11);
}

TEST(ConfException, AddStackPutsTheStackOnTheVeryObjectItIsGiven)
{
    const FormatException exception;
    const FormatException& result = AddStack(exception);
    EXPECT_EQ(&result, &exception);
    const std::string* const stack = boost::get_error_info<TagCallStack>(exception);
    ASSERT_NE(stack, nullptr);
    EXPECT_FALSE(stack->empty());
    static_assert(std::is_same_v<decltype(AddStack(exception)), const FormatException&>);
}

TEST(ConfException, AddStackMakesANewStandardExceptionWithTheStackInItsMessage)
{
    const std::invalid_argument exception("reason");
    const auto result = AddStack(exception);
    static_assert(std::is_same_v<decltype(AddStack(exception)), std::invalid_argument>);
    EXPECT_STREQ(exception.what(), "reason");
    const std::string message = result.what();
    EXPECT_EQ(message.rfind("reason\n", 0), 0u);
    EXPECT_GT(message.size(), std::string("reason\n").size());
}

TEST(ConfException, WhatIsTheStandardTextAndNotTheDescription)
{
    EXPECT_STREQ(ConfException().what(), std::exception().what());
    const Thrown thrown = ExpectThrow<FormatException>(MissALayout);
    EXPECT_EQ(thrown.what, std::exception().what());
    EXPECT_EQ(thrown.description, "Provided number of channels is not found in list");
}

TEST(ConfException, EveryThrownExceptionHasAStackAPlaceAndTheNameOfTheFunction)
{
    const Thrown thrown = ExpectThrow<FormatException>(MissALayout);
    EXPECT_NE(thrown.callStack.value_or(""), "");
    EXPECT_EQ(thrown.file, "Conf/Interfaces/ServiceRecords");
    EXPECT_GT(thrown.line.value_or(0), 0);
    ASSERT_TRUE(thrown.function);
    EXPECT_NE(thrown.function->find("FindRecord"), std::string::npos);
    EXPECT_NE(thrown.diagnostics.find(*thrown.function), std::string::npos);
}

TEST(ConfException, AThrownStandardExceptionHasAPlaceAndTheStackInItsMessage)
{
    const Thrown thrown = ExpectThrow<std::invalid_argument>(MissAPlane);
    EXPECT_EQ(thrown.what.rfind("Unexpected plan\n", 0), 0u);
    EXPECT_NE(thrown.what.find("GetPlanWidth"), std::string::npos);
    EXPECT_EQ(thrown.file, "Conf/Interfaces/PixelFormatDescription");
    EXPECT_GT(thrown.line.value_or(0), 0);
    ASSERT_TRUE(thrown.function);
    EXPECT_NE(thrown.diagnostics.find(*thrown.function), std::string::npos);
}

TEST(ConfException, TagsOutliveTheHandler)
{
    const Thrown thrown = ExpectThrow<LinkExists>(ThrowLinkExists);
    EXPECT_EQ(thrown.Get<ProfileException::TagRequestedLink>(), std::pair(1LL, 2LL));
    EXPECT_THROW(std::rethrow_exception(thrown.exception), LinkExists);
}

TEST(ConfException, BoostCanCopyWhatIsThrown)
{
    boost::exception_ptr copy;
    try
    {
        MissALayout();
    }
    catch (...)
    {
        copy = boost::current_exception();
    }
    try
    {
        boost::rethrow_exception(copy);
    }
    catch (const FormatException& e)
    {
        const std::string* const description = boost::get_error_info<TagDescription>(e);
        ASSERT_NE(description, nullptr);
        EXPECT_EQ(*description, "Provided number of channels is not found in list");
        return;
    }
    FAIL() << "the copy is of another class";
}

} // namespace
} // namespace Zelnor::Conf
