// What a property refuses, and how it says so.

#include "Core/Interfaces/Property.h"

#include "Tests/Support/Expect.h"

#include <boost/algorithm/string/erase.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>

namespace Zelnor::Core
{

namespace
{

using Testing::ExpectThrow;
using Testing::Thrown;

using Ratio = Property::Ratio;

void ExpectRefusal(const Thrown& thrown, const std::string& description, const std::string& name,
                   PropertyTypes type, const std::string& function)
{
    EXPECT_EQ(thrown.description, description);
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyName>(), name);
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyType>(), type);
    EXPECT_EQ(thrown.file, "Core/Interfaces/Property");
    EXPECT_NE(thrown.function.value_or("").find("Property::" + function), std::string::npos)
        << thrown.function.value_or("");
    EXPECT_GT(thrown.line.value_or(0), 0);
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
}

void ExpectNotApplicable(const Thrown& thrown, const std::string& method, const Property& property)
{
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyName>(), property.GetName());
    EXPECT_EQ(thrown.Get<PropertyException::TagPropertyType>(), property.GetType());
    EXPECT_EQ(thrown.Get<PropertyException::TagMethodName>(), method);
    EXPECT_EQ(thrown.file, "Core/Interfaces/Property");
    EXPECT_NE(thrown.function.value_or("").find("Property::" + method), std::string::npos);
    EXPECT_FALSE(thrown.callStack.value_or("").empty());
}

/// The overload without its result and what compilers write in different ways: "SetChild(conststring&)".
std::string OverloadOf(const Thrown& thrown)
{
    std::string signature = thrown.function.value_or("");
    for (const char* const dropped : {" ", "Zelnor::Core::", "std::"})
    {
        boost::algorithm::erase_all(signature, dropped);
    }
    boost::algorithm::replace_all(signature, "longunsignedint", "unsignedlong");
    const std::string owner = "Property::";
    return signature.substr(signature.rfind(owner, signature.find('(')) + owner.size());
}

/// What an integer that is too large for a 64-bit signed one does.
template <class T>
void ExpectTooLarge(T value, const std::string& number)
{
    Property group("video");
    group.CreateChildT("bitrate", 5LL);
    const Property before(group);
    const std::string description = "Property 'video' cannot hold " + number +
                                    " as its child 'bitrate': the largest integer is 9223372036854775807";
    const auto expect = [&](const std::string& method, auto action) {
        const Thrown thrown = ExpectThrow<PropertyException>(action);
        ExpectRefusal(thrown, description, "video", PROPERTY_TYPE_GROUP, method + "(");
        EXPECT_EQ(thrown.Get<PropertyException::TagMethodName>(), method);
        EXPECT_EQ(group, before);
    };
    expect("SetChildT", [&] { group.SetChildT("bitrate", value); });
    expect("CreateChildT", [&] { group.CreateChildT("bitrate", value); });
    group.RemoveChild("bitrate");
    ExpectRefusal(ExpectThrow<PropertyException>([&] { group.SetChildT("bitrate", value); }), description,
                  "video", PROPERTY_TYPE_GROUP, "SetChildT(");
    EXPECT_EQ(group, Property("video"));
}

} // namespace

TEST(Property, ReadingAnotherKindThrows)
{
    ExpectRefusal(ExpectThrow<PropertyException>([] { Property("p", "x").GetInt64(); }),
                  "Property 'p' holds a string, not a 64-bit integer", "p", PROPERTY_TYPE_STRING, "GetInt64");
    ExpectRefusal(ExpectThrow<PropertyException>([] { Property("p", 1).GetString(); }),
                  "Property 'p' holds a 64-bit integer, not a string", "p", PROPERTY_TYPE_INT64, "GetString");
    ExpectRefusal(ExpectThrow<PropertyException>([] { Property("p").GetRatio(); }),
                  "Property 'p' holds a group, not a rational", "p", PROPERTY_TYPE_GROUP, "GetRatio");
    ExpectRefusal(ExpectThrow<PropertyException>([] { Property::None("p").GetInt64(); }),
                  "Property 'p' holds nothing, not a 64-bit integer", "p", PROPERTY_TYPE_NONE, "GetInt64");
    ExpectRefusal(ExpectThrow<PropertyException>([] { Property("p", Ratio(1)).GetString(); }),
                  "Property 'p' holds a rational, not a string", "p", PROPERTY_TYPE_RATIO, "GetString");
}

TEST(Property, AskingForAMissingChildThrows)
{
    Property group("group");
    group.CreateChildT("number", 5LL);
    const Property before(group);
    const Property& constant = group;
    const std::string text = "Property 'group' has no child 'absent'";
    ExpectRefusal(ExpectThrow<PropertyException>([&] { group["absent"]; }), text, "group",
                  PROPERTY_TYPE_GROUP, "operator[]");
    ExpectRefusal(ExpectThrow<PropertyException>([&] { constant["absent"]; }), text, "group",
                  PROPERTY_TYPE_GROUP, "operator[]");
    ExpectRefusal(ExpectThrow<PropertyException>([&] { group.RemoveChild("absent"); }), text, "group",
                  PROPERTY_TYPE_GROUP, "RemoveChild");
    const std::string position = "Property 'group' has no child at position 1, it has 1";
    ExpectRefusal(ExpectThrow<PropertyException>([&] { group[1]; }), position, "group", PROPERTY_TYPE_GROUP,
                  "operator[]");
    ExpectRefusal(ExpectThrow<PropertyException>([&] { constant[1]; }), position, "group",
                  PROPERTY_TYPE_GROUP, "operator[]");
    EXPECT_EQ(group, before);
}

TEST(Property, AScalarHasNoChildren)
{
    Property number("n", 1);
    EXPECT_EQ(number.Count(), 0u);
    EXPECT_FALSE(number.ChildExists("x"));
    EXPECT_TRUE(number.FindChild("x") == number.end());
    EXPECT_TRUE(std::as_const(number).FindChild("x") == std::as_const(number).end());
    ExpectRefusal(ExpectThrow<PropertyException>([&] { number["x"]; }), "Property 'n' has no child 'x'", "n",
                  PROPERTY_TYPE_INT64, "operator[]");
    ExpectRefusal(ExpectThrow<PropertyException>([&] { number[0ul]; }),
                  "Property 'n' has no child at position 0, it has 0", "n", PROPERTY_TYPE_INT64,
                  "operator[]");
    ExpectRefusal(ExpectThrow<PropertyException>([&] { number.RemoveChild("x"); }),
                  "Property 'n' has no child 'x'", "n", PROPERTY_TYPE_INT64, "RemoveChild");
}

TEST(Property, AddingChildrenToAScalarThrowsAndChangesNothing)
{
    Property number("n", 1);
    const Property before(number);
    const auto expect = [&](const std::string& method, auto action) {
        ExpectNotApplicable(ExpectThrow<MethodIsNotApplicable>(action), method, before);
        EXPECT_EQ(before, number);
    };
    expect("SetChild", [&] { number.SetChild("x"); });
    expect("SetChild", [&] { number.SetChild("x", Property("y", 1)); });
    expect("Add", [&] { number.Add(Property("y", 1)); });
    expect("Add", [&] { number.Add(number); });
    expect("SetChildT", [&] { number.SetChildT("x", 5LL); });
    expect("CreateChildT", [&] { number.CreateChildT("x", 5LL); });
}

TEST(Property, ARefusalRecordsTheOverloadThatWasCalled)
{
    Property number("n", 1);
    const Property child("child");
    const auto overloadOf = [](auto action) {
        return OverloadOf(ExpectThrow<MethodIsNotApplicable>(action));
    };
    EXPECT_EQ(overloadOf([&] { number.Add(child); }), "Add(constProperty&)");
    EXPECT_EQ(overloadOf([&] { number.Add(Property()); }), "Add(Property&&)");
    EXPECT_EQ(overloadOf([&] { number.SetChild("x"); }), "SetChild(conststring&)");
    EXPECT_EQ(overloadOf([&] { number.SetChild("x", child); }), "SetChild(conststring&,constProperty&)");
    EXPECT_EQ(overloadOf([&] { number.SetChild("x", Property()); }), "SetChild(conststring&,Property&&)");
}

TEST(Property, AMissingChildRecordsTheOverloadThatWasCalled)
{
    Property group("g");
    const auto overloadOf = [](auto action) { return OverloadOf(ExpectThrow<PropertyException>(action)); };
    EXPECT_EQ(overloadOf([&] { group["x"]; }), "operator[](conststring&)&");
    EXPECT_EQ(overloadOf([&] { std::as_const(group)["x"]; }), "operator[](conststring&)const&");
    EXPECT_EQ(overloadOf([] { Property()["x"]; }), "operator[](conststring&)&&");
    EXPECT_EQ(overloadOf([&] { group[0ul]; }), "operator[](unsignedlong)&");
    EXPECT_EQ(overloadOf([&] { std::as_const(group)[0ul]; }), "operator[](unsignedlong)const&");
    EXPECT_EQ(overloadOf([] { Property()[0ul]; }), "operator[](unsignedlong)&&");
}

TEST(Property, AnotherKindRecordsTheOverloadThatWasCalled)
{
    const Property group("g");
    const auto overloadOf = [](auto action) { return OverloadOf(ExpectThrow<PropertyException>(action)); };
    EXPECT_EQ(overloadOf([&] { group.GetString(); }), "GetString()const&");
    EXPECT_EQ(overloadOf([] { Property().GetString(); }), "GetString()&&");
    EXPECT_EQ(overloadOf([&] { group.GetRatio(); }), "GetRatio()const&");
    EXPECT_EQ(overloadOf([] { Property().GetRatio(); }), "GetRatio()&&");
}

TEST(Property, AnUnsignedValueBeyondTheLargestIntegerIsRefused)
{
    enum Huge : std::uint64_t
    {
        HUGE_FIRST = 0x8000000000000000u
    };
    constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
    ExpectTooLarge<unsigned long long>(kMost, "18446744073709551615");
    ExpectTooLarge<unsigned long>(kMost, "18446744073709551615");
    ExpectTooLarge<std::uint64_t>(0x8000000000000000u, "9223372036854775808");
    ExpectTooLarge(HUGE_FIRST, "9223372036854775808");
}

TEST(Property, EveryOtherIntegerIsKeptAsItIs)
{
    constexpr long long kMost = std::numeric_limits<long long>::max();
    Property group("g");
    EXPECT_EQ(group.SetChildT("n", static_cast<unsigned long long>(kMost)).GetInt64(), kMost);
    EXPECT_EQ(group.SetChildT("n", static_cast<std::size_t>(kMost)).GetInt64(), kMost);
    EXPECT_EQ(group.SetChildT("n", std::numeric_limits<long long>::min()).GetInt64(), -kMost - 1);
    EXPECT_EQ(group.SetChildT("n", 4294967295u).GetInt64(), 4294967295);
    EXPECT_EQ(group.SetChildT("n", true).GetInt64(), 1);
    EXPECT_EQ(group.SetChildT("n", 'a').GetInt64(), 97);
    EXPECT_EQ(group.SetChildT("n", static_cast<signed char>(-1)).GetInt64(), -1);
    EXPECT_EQ(group.SetChildT("n", static_cast<std::uint16_t>(65535)).GetInt64(), 65535);
    EXPECT_EQ(group.SetChildT("n", PROPERTY_TYPE_GROUP).GetInt64(), 6);
    EXPECT_EQ(group.CreateChildT("m", static_cast<std::uint8_t>(255)).GetInt64(), 255);
    EXPECT_EQ(group.CreateChildT("m", -1).GetInt64(), -1);
}

TEST(Property, ANonGroupIsRefusedBeforeTheValueIs)
{
    Property number("n", 1);
    constexpr auto kMost = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(ExpectThrow<MethodIsNotApplicable>([&] { number.SetChildT("x", kMost); }).line, 260);
    EXPECT_EQ(ExpectThrow<MethodIsNotApplicable>([&] { number.CreateChildT("x", kMost); }).line, 243);
}

/// How the compiler writes a signature of `Property` that returns a reference.
#ifdef __clang__
constexpr const char* kReturned = "Zelnor::Core::Property &Zelnor::Core::Property::";
#else
constexpr const char* kReturned = "Zelnor::Core::Property& Zelnor::Core::Property::";
#endif

TEST(Property, SetChildTRecordsItsFixedLineAndFullSignature)
{
    Property none = Property::None("n");
    const Thrown thrown = ExpectThrow<MethodIsNotApplicable>([&] { none.SetChildT("x", 5LL); });
    EXPECT_EQ(thrown.line, 260);
    EXPECT_EQ(thrown.file, "Core/Interfaces/Property");
    const std::string signature = thrown.function.value_or("");
    EXPECT_EQ(signature.find(std::string(kReturned) + "SetChildT(const "), 0u) << signature;
    EXPECT_NE(signature.find("T = long long"), std::string::npos) << signature;
    EXPECT_NE(thrown.diagnostics.find(signature), std::string::npos);
    EXPECT_FALSE(thrown.description);
}

TEST(Property, CreateChildTRecordsItsFixedLineAndFullSignature)
{
    Property text("n", "text");
    const Thrown thrown = ExpectThrow<MethodIsNotApplicable>([&] { text.CreateChildT("x", Ratio(1, 2)); });
    EXPECT_EQ(thrown.line, 243);
    EXPECT_EQ(thrown.file, "Core/Interfaces/Property");
    const std::string signature = thrown.function.value_or("");
    EXPECT_EQ(signature.find(std::string(kReturned) + "CreateChildT(const "), 0u) << signature;
    EXPECT_NE(signature.find("T = boost::rational<long long"), std::string::npos) << signature;
}

} // namespace Zelnor::Core
