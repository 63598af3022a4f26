// How a group finds its children: by tags, by positions and by an index, each of which edits may make
// invalid.

#include "Core/Interfaces/Property.h"

#include "Tests/Support/CollidingNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Core
{

namespace
{

/// Enough for every way of looking children up.
constexpr int kMany = 300;

std::string NameOf(int i) { return "name " + std::to_string(i); }

Property MakeMany()
{
    Property group("group");
    for (long long i = 0; i < kMany; ++i)
    {
        group.SetChildT(NameOf(static_cast<int>(i)), i);
    }
    return group;
}

/// What a group of integers should hold.
using ChildRows = std::vector<std::pair<std::string, long long>>;

ChildRows::iterator FindIn(ChildRows& model, const std::string& name)
{
    return std::find_if(model.begin(), model.end(), [&name](const auto& row) { return row.first == name; });
}

void ExpectHolds(const Property& group, ChildRows& model)
{
    ASSERT_EQ(group.Count(), model.size());
    auto row = model.begin();
    for (const Property& child : group)
    {
        ASSERT_EQ(child.GetName(), row->first);
        ASSERT_EQ(child.GetInt64(), row->second);
        ++row;
    }
    for (unsigned long i = 0; i < model.size(); i += 7)
    {
        ASSERT_EQ(group[i].GetName(), model[i].first);
        ASSERT_EQ(group[model[i].first].GetInt64(), FindIn(model, model[i].first)->second);
    }
    ASSERT_FALSE(group.ChildExists("a name that no child has"));
}

/// One edit of both. Few names, so that many are repeated.
void Edit(std::mt19937& random, int names, Property& group, ChildRows& model)
{
    const auto pick = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const std::string name = NameOf(pick(names));
    const long long value = pick(1000);
    const auto found = FindIn(model, name);
    switch (pick(8))
    {
    case 0:
    case 1:
    case 2:
        group.SetChildT(name, value);
        found == model.end() ? model.emplace_back(name, value) : (found->second = value, *found);
        break;
    case 3:
        group.CreateChildT(name, value);
        model.emplace_back(name, value);
        break;
    case 4:
        group.SetChild(name, Property("another name", value));
        found == model.end() ? model.emplace_back(name, value) : (found->second = value, *found);
        break;
    case 5:
    case 6:
        if (found != model.end())
        {
            group.RemoveChild(name);
            model.erase(found);
        }
        break;
    case 7:
        if (found != model.end() && pick(4) == 0)
        {
            const std::string other = NameOf(pick(names));
            group[name] = Property(other, value);
            *found = {other, value};
        }
        break;
    }
}

} // namespace

TEST(PropertyChildren, AreFoundByNameAmongMany)
{
    const Property group = MakeMany();
    for (long long i = 0; i < kMany; ++i)
    {
        EXPECT_EQ(group[NameOf(static_cast<int>(i))].GetInt64(), i);
        EXPECT_EQ(group[static_cast<unsigned long>(i)].GetInt64(), i);
    }
    EXPECT_FALSE(group.ChildExists(NameOf(kMany)));
}

TEST(PropertyChildren, AreSetInMomentsWhateverTheirNamesAre)
{
    constexpr unsigned int kChoices = 16;
    const std::vector<std::string> names = Testing::CollidingNames::Make(kChoices);
    Property group("group");
    for (const std::string& name : names)
    {
        group.SetChildT(name, 1LL);
    }
    for (const std::string& name : names)
    {
        group.SetChildT(name, 2LL);
    }
    EXPECT_EQ(group.Count(), names.size());
    EXPECT_EQ(group[names.back()].GetInt64(), 2);
}

TEST(PropertyChildren, OfOneNameAreFoundFromTheFirstOnAlsoWhenItIsRemoved)
{
    Property group = MakeMany();
    group.CreateChildT(NameOf(5), 1000LL);
    group.CreateChildT(NameOf(5), 1001LL);
    group.SetChildT("last", 0LL);
    for (const long long value : {5LL, 1000LL, 1001LL})
    {
        EXPECT_EQ(group[NameOf(5)].GetInt64(), value);
        EXPECT_EQ(group.SetChildT(NameOf(5), value).GetInt64(), value);
        group.RemoveChild(NameOf(5));
    }
    EXPECT_FALSE(group.ChildExists(NameOf(5)));
    const Property& appended = group.SetChildT(NameOf(5), 2LL);
    EXPECT_EQ(&appended, &*std::prev(group.end()));
}

TEST(PropertyChildren, AreFoundByTheNamesThatAssignmentsGiveThem)
{
    Property group = MakeMany();
    group[NameOf(0)] = Property("renamed", -1);
    group[NameOf(kMany - 1)] = Property(NameOf(0), -2);
    EXPECT_EQ(group["renamed"].GetInt64(), -1);
    EXPECT_EQ(group.SetChildT(NameOf(0), 7LL).GetName(), NameOf(0));
    EXPECT_EQ(std::prev(group.end())->GetInt64(), 7);
    EXPECT_FALSE(group.ChildExists(NameOf(kMany - 1)));
    EXPECT_EQ(group.Count(), static_cast<unsigned long>(kMany));
}

TEST(PropertyChildren, LoseTheirNamesWhenTheyAreMovedFrom)
{
    Property few("group");
    few.SetChildT("a", 1LL);
    for (Property group : {few, MakeMany()})
    {
        const std::string name = group.begin()->GetName();
        const Property taken(std::move(*group.begin()));
        EXPECT_EQ(taken.GetName(), name);
        EXPECT_FALSE(group.ChildExists(name));
        EXPECT_EQ(&group[""], &*group.begin());
        const Property& appended = group.SetChildT(name, 3LL);
        EXPECT_EQ(&appended, &*std::prev(group.end()));
    }
}

TEST(PropertyChildren, UseThePlacesOfRemovedOnesAndKeepTheirOrder)
{
    Property group = MakeMany();
    ChildRows model;
    for (const Property& child : group)
    {
        model.emplace_back(child.GetName(), child.GetInt64());
    }
    for (int i = 0; i < kMany; i += 3)
    {
        group.RemoveChild(NameOf(i));
        model.erase(FindIn(model, NameOf(i)));
    }
    for (int i = 0; i < kMany; ++i)
    {
        const std::string name = "new " + std::to_string(i);
        group.SetChildT(name, static_cast<long long>(i));
        model.emplace_back(name, i);
    }
    ExpectHolds(group, model);
}

TEST(PropertyChildren, BeginAnewAfterTheLastOneIsRemoved)
{
    Property group = MakeMany();
    while (group.Count() != 0)
    {
        group.RemoveChild(std::prev(group.end())->GetName());
    }
    EXPECT_EQ(group.begin(), group.end());
    group.SetChildT("a", 1LL);
    group.SetChildT("b", 2LL);
    group.RemoveChild("a");
    group.RemoveChild("b");
    EXPECT_EQ(group, Property("group"));
    group.SetChildT("c", 3LL);
    EXPECT_EQ(group[0ul].GetName(), "c");
    EXPECT_EQ(group["c"].GetInt64(), 3);
}

TEST(PropertyChildren, AreTheSameAsInAPlainListWhateverIsEdited)
{
    for (const int names : {3, 20, 150, 1000})
    {
        std::mt19937 random(static_cast<unsigned>(names));
        Property group("group");
        ChildRows model;
        for (int i = 0; i < 3000; ++i)
        {
            Edit(random, names, group, model);
            if (i % 50 == 0)
            {
                ExpectHolds(group, model);
            }
        }
        ExpectHolds(Property(group), model);
        EXPECT_EQ(Property(group), group);
    }
}

TEST(PropertyChildren, AreFoundByNameHoweverManyOthersAreRemoved)
{
    constexpr int kNames = 2000;
    std::mt19937 random(1);
    std::vector<int> order(kNames);
    std::iota(order.begin(), order.end(), 0);
    Property group("group");
    for (const int name : order)
    {
        group.SetChildT(NameOf(name), 0LL);
    }
    std::shuffle(order.begin(), order.end(), random);
    for (int removed = 0; removed < kNames - 100; ++removed)
    {
        group.RemoveChild(NameOf(order[static_cast<std::size_t>(removed)]));
    }
    for (int i = 0; i < kNames; ++i)
    {
        const std::string name = NameOf(order[static_cast<std::size_t>(i)]);
        EXPECT_EQ(group.ChildExists(name), i >= kNames - 100) << name;
        EXPECT_EQ(group.SetChildT(name, 1LL).GetInt64(), 1);
    }
    EXPECT_EQ(group.Count(), static_cast<unsigned long>(kNames));
}

TEST(PropertyChildren, CanBeWalkedBackwards)
{
    const Property group = MakeMany();
    long long expected = kMany;
    for (Property::const_iterator child = group.end(); child != group.begin();)
    {
        --child;
        EXPECT_EQ(child->GetInt64(), --expected);
    }
    Property::const_iterator child = group.begin();
    EXPECT_EQ(child++->GetInt64(), 0);
    EXPECT_EQ(child--->GetInt64(), 1);
    EXPECT_EQ(child, group.begin());
}

TEST(PropertyChildren, AnIteratorBecomesAConstantOne)
{
    Property group = MakeMany();
    const Property::iterator found = group.FindChild(NameOf(3));
    const Property::const_iterator same = found;
    EXPECT_EQ(same, found);
    EXPECT_NE(same, group.begin());
    EXPECT_EQ(&*same, &*found);
}

TEST(PropertyChildren, TheEndOfAnEmptyGroupStaysItsEnd)
{
    Property group("group");
    Property::iterator end = group.end();
    group.SetChildT("a", 1LL);
    EXPECT_EQ(std::next(group.begin()), end);
    EXPECT_EQ((--end)->GetName(), "a");
}

// What a child owns is freed with its group however it came to own it; the address sanitizer sees what is
// not.

namespace
{

/// What no string holds within itself.
const std::string kOwned(100, 'x');

/// Integers with short names, which own nothing.
Property MakePlain(int count)
{
    Property group("group");
    for (long long i = 0; i < count; ++i)
    {
        group.CreateChildT("n" + std::to_string(i), i);
    }
    return group;
}

} // namespace

TEST(PropertyChildren, MayOwnMemoryFromTheBeginningOn)
{
    Property group("group");
    group.CreateChildT(kOwned, 1LL);
    group.CreateChildT("text", kOwned);
    group.SetChild("group").SetChild("inner").CreateChildT("text", kOwned);
    group.Add(Property(group));
    const Property copy(group);
    EXPECT_EQ(copy, group);
}

TEST(PropertyChildren, MayOwnMemoryLater)
{
    for (const int count : {1, 4, 5, 63, 64, 65, 200})
    {
        Property group = MakePlain(count);
        const std::string last = "n" + std::to_string(count - 1);
        group[last] = kOwned;
        group["n0"] = std::string(kOwned);
        EXPECT_EQ(group[last].GetString(), kOwned);
        group = MakePlain(count);
        group[last] = Property("a name that is rather long, since it owns memory", kOwned);
        EXPECT_EQ(group[static_cast<unsigned long>(count) - 1].GetString(), kOwned);
        group = MakePlain(count);
        group.SetChildT(last, kOwned);
        EXPECT_EQ(group[last].GetString(), kOwned);
        group = MakePlain(count);
        group.SetChild(last, Property("other", kOwned));
        EXPECT_EQ(group[last].GetString(), kOwned);
        group = MakePlain(count);
        group.SetChild(last).SetChildT("text", kOwned);
        EXPECT_EQ(group[last]["text"].GetString(), kOwned);
        group = MakePlain(count);
        group[last] = MakePlain(count);
        EXPECT_EQ(group[static_cast<unsigned long>(count) - 1], MakePlain(count));
    }
}

TEST(PropertyChildren, MayOwnMemoryAfterOthersWereRemoved)
{
    Property group = MakePlain(10);
    group.RemoveChild("n9");
    group.CreateChildT("text", kOwned);
    group.RemoveChild("text");
    group.CreateChildT("number", 1LL);
    group.RemoveChild("n3");
    group["n4"] = kOwned;
    group.CreateChildT("text", kOwned);
    EXPECT_EQ(group.Count(), 10u);
    EXPECT_EQ(group["text"].GetString(), kOwned);
    for (int i = 0; i < 9; ++i)
    {
        if (i != 3)
        {
            group.RemoveChild("n" + std::to_string(i));
        }
    }
    group.RemoveChild("number");
    group.RemoveChild("text");
    group.CreateChildT("again", kOwned);
    EXPECT_EQ(group["again"].GetString(), kOwned);
}

TEST(PropertyChildren, MayOwnMemoryAfterTheyWereMoved)
{
    Property group = MakePlain(3);
    group["n1"] = kOwned;
    Property moved(std::move(group[1ul]));
    group[1ul] = kOwned;
    group[2ul] = std::move(moved);
    Property other = MakePlain(3);
    std::swap(group, other);
    std::swap(group[0ul], other[0ul]);
    std::swap(group[2ul], other[2ul]);
    EXPECT_EQ(group[2ul].GetString(), kOwned);
    EXPECT_EQ(other[1ul].GetString(), kOwned);
}

} // namespace Zelnor::Core
