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

Property SampleGroup()
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
    EXPECT_EQ(property.GetName(), "name");
    EXPECT_EQ(property.GetType(), PROPERTY_TYPE_GROUP);
    EXPECT_EQ(property.Count(), 0u);
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
    EXPECT_EQ(Property("a", 1).GetType(), PROPERTY_TYPE_INT64);
    EXPECT_EQ(Property("a", "1").GetType(), PROPERTY_TYPE_STRING);
    EXPECT_EQ(Property("a", Ratio(1)).GetType(), PROPERTY_TYPE_RATIO);
    EXPECT_EQ(Property::None("a").GetType(), PROPERTY_TYPE_NONE);
    EXPECT_EQ(Property::None("a").GetName(), "a");
}

TEST(Property, TakesTextsOver)
{
    std::string name(100, 'n');
    std::string value(100, 'v');
    const char* const storage = value.data();
    const Property property(std::move(name), std::move(value));
    EXPECT_EQ(property.GetName(), std::string(100, 'n'));
    EXPECT_EQ(property.GetString().data(), storage);

    std::string assigned(100, 'w');
    const char* const assignedStorage = assigned.data();
    Property other("x", 1);
    other = std::move(assigned);
    EXPECT_EQ(other.GetString().data(), assignedStorage);
    EXPECT_EQ(other.GetName(), "x");
}

TEST(Property, CopyIsDeep)
{
    const Property original = SampleGroup();
    Property copy(original);
    EXPECT_EQ(original, copy);
    copy["inner"]["leaf"] = 2LL;
    EXPECT_EQ(original["inner"]["leaf"].GetInt64(), 1);
    EXPECT_NE(original, copy);
}

TEST(Property, MovedFromPropertyKeepsItsTypeAndIsEmpty)
{
    Property group = SampleGroup();
    const Property taken(std::move(group));
    EXPECT_EQ(taken, SampleGroup());
    EXPECT_EQ(group.GetType(), PROPERTY_TYPE_GROUP);
    EXPECT_EQ(group.Count(), 0u);
    group = Property("new", 1);
    EXPECT_EQ(group.GetInt64(), 1);
}

TEST(Property, AssigningAPropertyTakesItsNameToo)
{
    Property target("old", 1);
    const Property source("new", "text");
    target = source;
    EXPECT_EQ(target, source);
    target = Property("newest");
    EXPECT_EQ(target.GetName(), "newest");
    EXPECT_EQ(target.GetType(), PROPERTY_TYPE_GROUP);
}

TEST(Property, AssigningAScalarKeepsTheName)
{
    Property property("name", 1);
    property = std::string("text");
    EXPECT_EQ(property, Property("name", "text"));
    property = Ratio(1, 2);
    EXPECT_EQ(property, Property("name", Ratio(1, 2)));
    property = 7;
    EXPECT_EQ(property, Property("name", 7));
}

TEST(Property, AssigningAScalarToAGroupDropsItsChildren)
{
    Property byNumber = SampleGroup();
    byNumber = 1LL;
    EXPECT_EQ(byNumber.Count(), 0u);
    EXPECT_EQ(byNumber.GetType(), PROPERTY_TYPE_INT64);
    Property byText = SampleGroup();
    byText = "text";
    EXPECT_EQ(byText, Property("group", "text"));
    Property byRatio = SampleGroup();
    byRatio = Ratio(1, 2);
    EXPECT_EQ(byRatio, Property("group", Ratio(1, 2)));
}

TEST(Property, AssigningAValueOfItsOwnChildIsSafe)
{
    Property text = SampleGroup();
    text = text["text"].GetString();
    EXPECT_EQ(text.GetString(), SampleGroup()["text"].GetString());
    Property ratio = SampleGroup();
    ratio = ratio["ratio"].GetRatio();
    EXPECT_EQ(ratio.GetRatio(), Ratio(30000, 1001));
    Property self("name", "a text that is too long to be kept in the string itself");
    self = self.GetString();
    EXPECT_EQ(self.GetString(), "a text that is too long to be kept in the string itself");
    self = self.GetName();
    EXPECT_EQ(self, Property("name", "name"));
}

TEST(Property, AssigningItselfOrItsChildIsSafe)
{
    Property byCopy = SampleGroup();
    byCopy = byCopy["inner"];
    EXPECT_EQ(byCopy, SampleGroup()["inner"]);
    Property byMove = SampleGroup();
    byMove = std::move(byMove["inner"]);
    EXPECT_EQ(byMove, SampleGroup()["inner"]);
    Property self = SampleGroup();
    const Property& alias = self;
    self = alias;
    EXPECT_EQ(self, SampleGroup());
    Property& mutableAlias = self;
    self = std::move(mutableAlias);
    EXPECT_EQ(self, SampleGroup());
}

TEST(Property, ACopyOfAnAncestorMayBeAssignedToItsDescendant)
{
    Property property = SampleGroup();
    property["inner"]["leaf"] = property;
    EXPECT_EQ(property["inner"][0ul], SampleGroup());
    EXPECT_EQ(property.Count(), 5u);
}

TEST(Property, SetChildTAppendsAndThenChangesInPlace)
{
    Property group("group");
    group.CreateChildT("first", 1LL);
    Property& added = group.SetChildT("number", 5LL);
    EXPECT_EQ(&added, &group[1]);
    EXPECT_EQ(added.GetInt64(), 5);
    group.CreateChildT("last", 1LL);
    Property& changed = group.SetChildT("number", 7LL);
    EXPECT_EQ(&added, &changed);
    EXPECT_EQ(changed.GetInt64(), 7);
    EXPECT_EQ(NamesOf(group), (Names{"first", "number", "last"}));
    EXPECT_EQ(group.SetChildT("number", std::string("text")).GetString(), "text");
    EXPECT_EQ(group.SetChildT("number", Ratio(1, 2)).GetRatio(), Ratio(1, 2));
    EXPECT_EQ(group.Count(), 3u);
}

TEST(Property, SetChildTReplacesAGroupByTheValue)
{
    Property group = SampleGroup();
    group.SetChildT("inner", 3LL);
    EXPECT_EQ(group["inner"], Property("inner", 3));
    EXPECT_EQ(group.Count(), 5u);
}

TEST(Property, SetChildTMayTakeTheTextThatItReplaces)
{
    Property group = SampleGroup();
    group.SetChildT(group["text"].GetName(), group["text"].GetString());
    EXPECT_EQ(group, SampleGroup());
    group.SetChildT(group["inner"].GetName(), group["text"].GetString());
    EXPECT_EQ(group["text"].GetString(), group["inner"].GetString());
}

TEST(Property, CreateChildTAppendsEvenWhenTheNameIsThere)
{
    Property group("group");
    group.CreateChildT("same", 1LL);
    group.CreateChildT("same", 2LL);
    EXPECT_EQ(NamesOf(group), (Names{"same", "same"}));
    EXPECT_EQ(group[1].GetInt64(), 2);
}

TEST(Property, OfEqualNamesTheFirstIsMeant)
{
    Property group("group");
    group.Add(Property("same", 1));
    group.Add(Property("same", 2));
    EXPECT_EQ(&group[0ul], &*group.FindChild("same"));
    EXPECT_EQ(group["same"].GetInt64(), 1);
    group.SetChildT("same", 3LL);
    group.SetChild("same", Property("other", group["same"].GetInt64() + 1));
    EXPECT_EQ(group[0ul].GetInt64(), 4);
    EXPECT_EQ(group[1].GetInt64(), 2);
    group.RemoveChild("same");
    EXPECT_EQ(group.Count(), 1u);
    EXPECT_EQ(group["same"].GetInt64(), 2);
}

TEST(Property, SetChildOfANameAppendsAnEmptyGroup)
{
    Property group("group");
    Property& child = group.SetChild("child");
    EXPECT_EQ(&child, &group["child"]);
    EXPECT_EQ(child, Property("child"));
}

TEST(Property, SetChildOfAnExistingNameEmptiesItInPlace)
{
    Property group = SampleGroup();
    const Property* const before = &group["text"];
    Property& emptied = group.SetChild("text");
    EXPECT_EQ(&emptied, before);
    EXPECT_EQ(emptied, Property("text"));
    EXPECT_EQ(NamesOf(SampleGroup()), NamesOf(group));
    EXPECT_EQ(group.SetChild("inner"), Property("inner"));
}

TEST(Property, SetChildGivesTheValueTheKeysName)
{
    Property group = SampleGroup();
    const Property value("its own name", 9);
    EXPECT_EQ(group.SetChild("new", value), Property("new", 9));
    EXPECT_EQ(group.SetChild("ratio", value), Property("ratio", 9));
    EXPECT_EQ(value.GetName(), "its own name");
    EXPECT_EQ(NamesOf(group), (Names{"number", "text", "ratio", "inner", "nothing", "new"}));
}

TEST(Property, SetChildMayTakeItselfOrItsChildren)
{
    Property group = SampleGroup();
    group.SetChild("x", group);
    Property expected = SampleGroup();
    EXPECT_EQ(group.Count(), 6u);
    for (const Property& child : expected)
    {
        EXPECT_EQ(group["x"][child.GetName()], child);
    }
    group.SetChild("x", group["x"]["inner"]);
    EXPECT_EQ(group["x"]["leaf"].GetInt64(), 1);
    group.SetChild("x", group["x"]);
    EXPECT_EQ(group["x"]["leaf"].GetInt64(), 1);
    group.SetChild("inner", group);
    EXPECT_EQ(group["inner"].Count(), 6u);
    EXPECT_EQ(group["inner"]["inner"]["leaf"].GetInt64(), 1);
}

TEST(Property, SetChildMayMoveItselfOrItsChildren)
{
    Property group = SampleGroup();
    group.SetChild("inner", std::move(group["inner"]["leaf"]));
    EXPECT_EQ(group["inner"], Property("inner", 1));
    group.SetChild("text", std::move(group["text"]));
    EXPECT_EQ(group["text"], SampleGroup()["text"]);
    Property self = SampleGroup();
    self.SetChild("inner", std::move(self));
    EXPECT_EQ(self.GetName(), "group");
    EXPECT_EQ(self["inner"]["text"], SampleGroup()["text"]);
    Property other = SampleGroup();
    other.SetChild("new", std::move(other));
    EXPECT_EQ(other.Count(), 6u);
    EXPECT_EQ(other["new"].Count(), 5u);
}

TEST(Property, SetChildMayTakeItsKeyFromWhatItReplacesOrMoves)
{
    Property group = SampleGroup();
    group.SetChild(group["text"].GetName(), Property("x", 1));
    EXPECT_EQ(group["text"], Property("text", 1));
    Property value("a name that is too long to be kept in the string itself", 1);
    group.SetChild(value.GetName(), std::move(value));
    EXPECT_EQ(group["a name that is too long to be kept in the string itself"].GetInt64(), 1);
    group.SetChild(group.GetName());
    EXPECT_TRUE(group.ChildExists("group"));
}

TEST(Property, AddAppendsCopiesAlsoOfItself)
{
    Property group("group");
    const Property child("child", 1);
    group.Add(child);
    group.Add(child);
    EXPECT_EQ(NamesOf(group), (Names{"child", "child"}));
    group.Add(group);
    EXPECT_EQ(group[2].Count(), 2u);
    group.Add(group[0ul]);
    EXPECT_EQ(group[3], child);
    group.Add(std::move(group));
    EXPECT_EQ(group.GetName(), "group");
    EXPECT_EQ(group.Count(), 5u);
    EXPECT_EQ(group[4].Count(), 4u);
}

TEST(Property, RemoveChildMayTakeItsNameFromTheChild)
{
    Property group = SampleGroup();
    group.RemoveChild(group["text"].GetName());
    EXPECT_EQ(NamesOf(group), (Names{"number", "ratio", "inner", "nothing"}));
}

TEST(Property, PositionsCountFromZeroInOrder)
{
    Property group("group");
    for (long long i = 0; i < 7; ++i)
    {
        group.Add(Property("child", i));
        EXPECT_EQ(group[group.Count() - 1].GetInt64(), i);
    }
    for (unsigned long i = 0; i < 7; ++i)
    {
        EXPECT_EQ(std::as_const(group)[i].GetInt64(), static_cast<long long>(i));
    }
}

TEST(Property, ReferencesAndIteratorsStayValidWhileSiblingsChange)
{
    Property group = SampleGroup();
    Property& text = group["text"];
    const Property::iterator inner = group.FindChild("inner");
    group.RemoveChild("number");
    group.RemoveChild("ratio");
    for (int i = 0; i < 100; ++i)
    {
        group.CreateChildT("more", 1LL);
    }
    group.SetChild("nothing", Property("x", 1));
    EXPECT_EQ(&group["text"], &text);
    EXPECT_EQ(inner->GetName(), "inner");
    EXPECT_EQ((*inner)["leaf"].GetInt64(), 1);
}

TEST(Property, ChildrenMovedWithTheirGroupStayWhereTheyAre)
{
    Property group = SampleGroup();
    const Property* const text = &group["text"];
    Property taken(std::move(group));
    EXPECT_EQ(&taken["text"], text);
}

TEST(Property, TemporaryHandsOutValues)
{
    const Property inner = SampleGroup()["inner"];
    EXPECT_EQ(inner["leaf"].GetInt64(), 1);
    const std::string& text = SampleGroup()["text"].GetString();
    EXPECT_EQ("a text that is too long to be kept in the string itself", text);
    EXPECT_EQ(SampleGroup()[0ul].GetInt64(), 5);
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
