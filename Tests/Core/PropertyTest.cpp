#include "Core/Interfaces/Property.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelnor::Core
{

namespace
{

using Ratio = Property::Ratio;

static_assert(std::is_nothrow_move_constructible_v<Property>);
static_assert(std::is_nothrow_move_assignable_v<Property>);
static_assert(std::has_virtual_destructor_v<Property>);
static_assert(std::is_assignable_v<Property&, int>);
static_assert(std::is_assignable_v<Property&, const char*>);
static_assert(!std::is_assignable_v<Property&, double>);
static_assert(!std::is_assignable_v<Property&, float>);
static_assert(!std::is_constructible_v<Property, const std::string&, double>);
static_assert(!std::is_constructible_v<Property, const char*, float>);
static_assert(!std::is_convertible_v<std::string, Property>);
static_assert(std::is_same_v<std::underlying_type_t<PropertyTypes>, std::int32_t>);
static_assert(PROPERTY_TYPE_NONE == 0 && PROPERTY_TYPE_GROUP == 6);
// What a temporary hands out must not be a reference into it.
static_assert(std::is_same_v<decltype(std::declval<Property>()["a"]), Property>);
static_assert(std::is_same_v<decltype(std::declval<Property>()[0ul]), Property>);
static_assert(std::is_same_v<decltype(std::declval<Property>().GetString()), std::string>);
static_assert(std::is_same_v<decltype(std::declval<Property>().GetRatio()), Ratio>);
static_assert(std::is_same_v<decltype(std::declval<const Property&>()[0ul]), const Property&>);

Property Sample()
{
    Property group("group");
    group.CreateChildT("number", 5LL);
    group.CreateChildT("text", std::string("a text that is too long to be kept in the string itself"));
    group.CreateChildT("ratio", Ratio(30000, 1001));
    group.SetChild("inner").CreateChildT("leaf", 1LL);
    group.Add(Property::None("nothing"));
    return group;
}

std::vector<std::string> NamesOf(const Property& group)
{
    std::vector<std::string> names;
    for (const Property& child : group)
    {
        names.push_back(child.GetName());
    }
    return names;
}

using Names = std::vector<std::string>;

} // namespace

TEST(Property, OfANameIsAnEmptyGroup)
{
    const Property property("name");
    EXPECT_EQ("name", property.GetName());
    EXPECT_EQ(PROPERTY_TYPE_GROUP, property.GetType());
    EXPECT_EQ(0u, property.Count());
    EXPECT_TRUE(property.begin() == property.end());
    EXPECT_EQ(Property(""), Property());
}

TEST(Property, HoldsEachKindOfValueAtItsLimits)
{
    EXPECT_EQ(std::numeric_limits<long long>::min(),
              Property("a", std::numeric_limits<long long>::min()).GetInt64());
    EXPECT_EQ(std::numeric_limits<long long>::max(),
              Property("a", std::numeric_limits<long long>::max()).GetInt64());
    const std::string bytes("\0\xff\x80 x", 5);
    EXPECT_EQ(bytes, Property("a", bytes).GetString());
    EXPECT_EQ(Ratio(-1, 3), Property("a", Ratio(2, -6)).GetRatio());
    EXPECT_EQ(PROPERTY_TYPE_INT64, Property("a", 1).GetType());
    EXPECT_EQ(PROPERTY_TYPE_STRING, Property("a", "1").GetType());
    EXPECT_EQ(PROPERTY_TYPE_RATIO, Property("a", Ratio(1)).GetType());
    EXPECT_EQ(PROPERTY_TYPE_NONE, Property::None("a").GetType());
    EXPECT_EQ("a", Property::None("a").GetName());
}

TEST(Property, TakesTextsOver)
{
    std::string name(100, 'n');
    std::string value(100, 'v');
    const char* const storage = value.data();
    const Property property(std::move(name), std::move(value));
    EXPECT_EQ(std::string(100, 'n'), property.GetName());
    EXPECT_EQ(storage, property.GetString().data());

    std::string assigned(100, 'w');
    const char* const assignedStorage = assigned.data();
    Property other("x", 1);
    other = std::move(assigned);
    EXPECT_EQ(assignedStorage, other.GetString().data());
    EXPECT_EQ("x", other.GetName());
}

TEST(Property, CopyIsDeep)
{
    const Property original = Sample();
    Property copy(original);
    EXPECT_EQ(original, copy);
    copy["inner"]["leaf"] = 2LL;
    EXPECT_EQ(1, original["inner"]["leaf"].GetInt64());
    EXPECT_NE(original, copy);
}

TEST(Property, MovedFromPropertyKeepsItsTypeAndIsEmpty)
{
    Property group = Sample();
    const Property taken(std::move(group));
    EXPECT_EQ(Sample(), taken);
    EXPECT_EQ(PROPERTY_TYPE_GROUP, group.GetType());
    EXPECT_EQ(0u, group.Count());
    group = Property("new", 1);
    EXPECT_EQ(1, group.GetInt64());
}

TEST(Property, AssigningAPropertyTakesItsNameToo)
{
    Property target("old", 1);
    const Property source("new", "text");
    target = source;
    EXPECT_EQ(source, target);
    target = Property("newest");
    EXPECT_EQ("newest", target.GetName());
    EXPECT_EQ(PROPERTY_TYPE_GROUP, target.GetType());
}

TEST(Property, AssigningAScalarKeepsTheName)
{
    Property property("name", 1);
    property = std::string("text");
    EXPECT_EQ(Property("name", "text"), property);
    property = Ratio(1, 2);
    EXPECT_EQ(Property("name", Ratio(1, 2)), property);
    property = 7;
    EXPECT_EQ(Property("name", 7), property);
}

TEST(Property, AssigningAScalarToAGroupDropsItsChildren)
{
    Property byNumber = Sample();
    byNumber = 1LL;
    EXPECT_EQ(0u, byNumber.Count());
    EXPECT_EQ(PROPERTY_TYPE_INT64, byNumber.GetType());
    Property byText = Sample();
    byText = "text";
    EXPECT_EQ(Property("group", "text"), byText);
    Property byRatio = Sample();
    byRatio = Ratio(1, 2);
    EXPECT_EQ(Property("group", Ratio(1, 2)), byRatio);
}

TEST(Property, AssigningAValueOfItsOwnChildIsSafe)
{
    Property text = Sample();
    text = text["text"].GetString();
    EXPECT_EQ(Sample()["text"].GetString(), text.GetString());
    Property ratio = Sample();
    ratio = ratio["ratio"].GetRatio();
    EXPECT_EQ(Ratio(30000, 1001), ratio.GetRatio());
    Property self("name", "a text that is too long to be kept in the string itself");
    self = self.GetString();
    EXPECT_EQ("a text that is too long to be kept in the string itself", self.GetString());
    self = self.GetName();
    EXPECT_EQ(Property("name", "name"), self);
}

TEST(Property, AssigningItselfOrItsChildIsSafe)
{
    Property byCopy = Sample();
    byCopy = byCopy["inner"];
    EXPECT_EQ(Sample()["inner"], byCopy);
    Property byMove = Sample();
    byMove = std::move(byMove["inner"]);
    EXPECT_EQ(Sample()["inner"], byMove);
    Property self = Sample();
    const Property& alias = self;
    self = alias;
    EXPECT_EQ(Sample(), self);
    Property& mutableAlias = self;
    self = std::move(mutableAlias);
    EXPECT_EQ(Sample(), self);
}

TEST(Property, ACopyOfAnAncestorMayBeAssignedToItsDescendant)
{
    Property property = Sample();
    property["inner"]["leaf"] = property;
    EXPECT_EQ(Sample(), property["inner"][0ul]);
    EXPECT_EQ(5u, property.Count());
}

TEST(Property, SetChildTAppendsAndThenChangesInPlace)
{
    Property group("group");
    group.CreateChildT("first", 1LL);
    Property& added = group.SetChildT("number", 5LL);
    EXPECT_EQ(&added, &group[1]);
    EXPECT_EQ(5, added.GetInt64());
    group.CreateChildT("last", 1LL);
    Property& changed = group.SetChildT("number", 7LL);
    EXPECT_EQ(&added, &changed);
    EXPECT_EQ(7, changed.GetInt64());
    EXPECT_EQ((Names{"first", "number", "last"}), NamesOf(group));
    EXPECT_EQ("text", group.SetChildT("number", std::string("text")).GetString());
    EXPECT_EQ(Ratio(1, 2), group.SetChildT("number", Ratio(1, 2)).GetRatio());
    EXPECT_EQ(3u, group.Count());
}

TEST(Property, SetChildTReplacesAGroupByTheValue)
{
    Property group = Sample();
    group.SetChildT("inner", 3LL);
    EXPECT_EQ(Property("inner", 3), group["inner"]);
    EXPECT_EQ(5u, group.Count());
}

TEST(Property, SetChildTMayTakeTheTextThatItReplaces)
{
    Property group = Sample();
    group.SetChildT(group["text"].GetName(), group["text"].GetString());
    EXPECT_EQ(Sample(), group);
    group.SetChildT(group["inner"].GetName(), group["text"].GetString());
    EXPECT_EQ(group["text"].GetString(), group["inner"].GetString());
}

TEST(Property, CreateChildTAppendsEvenWhenTheNameIsThere)
{
    Property group("group");
    group.CreateChildT("same", 1LL);
    group.CreateChildT("same", 2LL);
    EXPECT_EQ((Names{"same", "same"}), NamesOf(group));
    EXPECT_EQ(2, group[1].GetInt64());
}

TEST(Property, OfEqualNamesTheFirstIsMeant)
{
    Property group("group");
    group.Add(Property("same", 1));
    group.Add(Property("same", 2));
    EXPECT_EQ(&group[0ul], &*group.FindChild("same"));
    EXPECT_EQ(1, group["same"].GetInt64());
    group.SetChildT("same", 3LL);
    group.SetChild("same", Property("other", group["same"].GetInt64() + 1));
    EXPECT_EQ(4, group[0ul].GetInt64());
    EXPECT_EQ(2, group[1].GetInt64());
    group.RemoveChild("same");
    EXPECT_EQ(1u, group.Count());
    EXPECT_EQ(2, group["same"].GetInt64());
}

TEST(Property, SetChildOfANameAppendsAnEmptyGroup)
{
    Property group("group");
    Property& child = group.SetChild("child");
    EXPECT_EQ(&child, &group["child"]);
    EXPECT_EQ(Property("child"), child);
}

TEST(Property, SetChildOfAnExistingNameEmptiesItInPlace)
{
    Property group = Sample();
    const Property* const before = &group["text"];
    Property& emptied = group.SetChild("text");
    EXPECT_EQ(before, &emptied);
    EXPECT_EQ(Property("text"), emptied);
    EXPECT_EQ(NamesOf(Sample()), NamesOf(group));
    EXPECT_EQ(Property("inner"), group.SetChild("inner"));
}

TEST(Property, SetChildGivesTheValueTheKeysName)
{
    Property group = Sample();
    const Property value("its own name", 9);
    EXPECT_EQ(Property("new", 9), group.SetChild("new", value));
    EXPECT_EQ(Property("ratio", 9), group.SetChild("ratio", value));
    EXPECT_EQ("its own name", value.GetName());
    EXPECT_EQ((Names{"number", "text", "ratio", "inner", "nothing", "new"}), NamesOf(group));
}

TEST(Property, SetChildMayTakeItselfOrItsChildren)
{
    Property group = Sample();
    group.SetChild("x", group);
    Property expected = Sample();
    EXPECT_EQ(6u, group.Count());
    for (const Property& child : expected)
    {
        EXPECT_EQ(child, group["x"][child.GetName()]);
    }
    group.SetChild("x", group["x"]["inner"]);
    EXPECT_EQ(1, group["x"]["leaf"].GetInt64());
    group.SetChild("x", group["x"]);
    EXPECT_EQ(1, group["x"]["leaf"].GetInt64());
    group.SetChild("inner", group);
    EXPECT_EQ(6u, group["inner"].Count());
    EXPECT_EQ(1, group["inner"]["inner"]["leaf"].GetInt64());
}

TEST(Property, SetChildMayMoveItselfOrItsChildren)
{
    Property group = Sample();
    group.SetChild("inner", std::move(group["inner"]["leaf"]));
    EXPECT_EQ(Property("inner", 1), group["inner"]);
    group.SetChild("text", std::move(group["text"]));
    EXPECT_EQ(Sample()["text"], group["text"]);
    Property self = Sample();
    self.SetChild("inner", std::move(self));
    EXPECT_EQ("group", self.GetName());
    EXPECT_EQ(Sample()["text"], self["inner"]["text"]);
    Property other = Sample();
    other.SetChild("new", std::move(other));
    EXPECT_EQ(6u, other.Count());
    EXPECT_EQ(5u, other["new"].Count());
}

TEST(Property, SetChildMayTakeItsKeyFromWhatItReplacesOrMoves)
{
    Property group = Sample();
    group.SetChild(group["text"].GetName(), Property("x", 1));
    EXPECT_EQ(Property("text", 1), group["text"]);
    Property value("a name that is too long to be kept in the string itself", 1);
    group.SetChild(value.GetName(), std::move(value));
    EXPECT_EQ(1, group["a name that is too long to be kept in the string itself"].GetInt64());
    group.SetChild(group.GetName());
    EXPECT_TRUE(group.ChildExists("group"));
}

TEST(Property, AddAppendsCopiesAlsoOfItself)
{
    Property group("group");
    const Property child("child", 1);
    group.Add(child);
    group.Add(child);
    EXPECT_EQ((Names{"child", "child"}), NamesOf(group));
    group.Add(group);
    EXPECT_EQ(2u, group[2].Count());
    group.Add(group[0ul]);
    EXPECT_EQ(child, group[3]);
    group.Add(std::move(group));
    EXPECT_EQ("group", group.GetName());
    EXPECT_EQ(5u, group.Count());
    EXPECT_EQ(4u, group[4].Count());
}

TEST(Property, RemoveChildMayTakeItsNameFromTheChild)
{
    Property group = Sample();
    group.RemoveChild(group["text"].GetName());
    EXPECT_EQ((Names{"number", "ratio", "inner", "nothing"}), NamesOf(group));
}

TEST(Property, PositionsCountFromZeroInOrder)
{
    Property group("group");
    for (long long i = 0; i < 7; ++i)
    {
        group.Add(Property("child", i));
        EXPECT_EQ(i, group[group.Count() - 1].GetInt64());
    }
    for (unsigned long i = 0; i < 7; ++i)
    {
        EXPECT_EQ(static_cast<long long>(i), std::as_const(group)[i].GetInt64());
    }
}

TEST(Property, ReferencesAndIteratorsStayValidWhileSiblingsChange)
{
    Property group = Sample();
    Property& text = group["text"];
    const Property::iterator inner = group.FindChild("inner");
    group.RemoveChild("number");
    group.RemoveChild("ratio");
    for (int i = 0; i < 100; ++i)
    {
        group.CreateChildT("more", 1LL);
    }
    group.SetChild("nothing", Property("x", 1));
    EXPECT_EQ(&text, &group["text"]);
    EXPECT_EQ("inner", inner->GetName());
    EXPECT_EQ(1, (*inner)["leaf"].GetInt64());
}

TEST(Property, ChildrenMovedWithTheirGroupStayWhereTheyAre)
{
    Property group = Sample();
    const Property* const text = &group["text"];
    Property taken(std::move(group));
    EXPECT_EQ(text, &taken["text"]);
}

TEST(Property, TemporaryHandsOutValues)
{
    const Property inner = Sample()["inner"];
    EXPECT_EQ(1, inner["leaf"].GetInt64());
    const std::string& text = Sample()["text"].GetString();
    EXPECT_EQ("a text that is too long to be kept in the string itself", text);
    EXPECT_EQ(5, Sample()[0ul].GetInt64());
}

TEST(Property, EqualityIsOfNameTypeValueAndChildrenInOrder)
{
    EXPECT_NE(Property("a", 1), Property("b", 1));
    EXPECT_NE(Property("a", 1), Property("a", 2));
    EXPECT_NE(Property("a", 1), Property("a", "1"));
    EXPECT_NE(Property("a", 1), Property("a", Ratio(1)));
    EXPECT_NE(Property("a"), Property::None("a"));
    EXPECT_EQ(Property::None("a"), Property::None("a"));
    Property ordered("g");
    ordered.CreateChildT("x", 1LL);
    ordered.CreateChildT("y", 1LL);
    Property reversed("g");
    reversed.CreateChildT("y", 1LL);
    reversed.CreateChildT("x", 1LL);
    EXPECT_NE(ordered, reversed);
    Property longer(ordered);
    longer.CreateChildT("z", 1LL);
    EXPECT_NE(ordered, longer);
    EXPECT_NE(longer, ordered);
}

} // namespace Zelnor::Core
