// Trees so deep that a walk which recursed once a level would overflow the stack.

#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertySerializer.h"

#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>

#include <ostream>
#include <streambuf>
#include <utility>

namespace Zelnor::Core
{

namespace
{

constexpr int kDepth = 200000;

Property Chain(int depth)
{
    Property chain("g");
    Property* innermost = &chain;
    for (int i = 1; i < depth; ++i)
    {
        innermost = &innermost->SetChild("g");
    }
    innermost->CreateChildT("leaf", 1LL);
    return chain;
}

class CountingBuffer : public std::streambuf
{
public:
    std::streamsize count = 0;

private:
    std::streamsize xsputn(const char*, std::streamsize size) override { return count += size, size; }
    int_type overflow(int_type c) override { return ++count, traits_type::not_eof(c); }
};

} // namespace

TEST(PropertyDepth, AChainIsMadeCopiedComparedAndDestroyed)
{
    const Property chain = Chain(kDepth);
    Property copy(chain);
    EXPECT_EQ(chain, copy);
    copy["g"]["g"].CreateChildT("more", 1LL);
    EXPECT_NE(chain, copy);
    EXPECT_NE(chain, Chain(kDepth - 1));
}

TEST(PropertyDepth, AChainIsAssignedOver)
{
    const Property chain = Chain(kDepth);
    Property target = Chain(kDepth);
    target = chain;
    EXPECT_EQ(chain, target);
    target = 1LL;
    EXPECT_EQ(Property("g", 1), target);
    target = Chain(kDepth);
    target = "text";
    target = Chain(kDepth);
    target = Property::Ratio(1, 2);
    target = Chain(kDepth);
    target = Property("small");
    EXPECT_EQ(0u, target.Count());
}

TEST(PropertyDepth, AChainTakesAPartOfItself)
{
    Property chain = Chain(kDepth);
    chain = chain["g"];
    EXPECT_EQ(Chain(kDepth - 1), chain);
    chain = std::move(chain["g"]);
    EXPECT_EQ(Chain(kDepth - 2), chain);
    chain.SetChild("g", chain);
    EXPECT_EQ(Chain(kDepth - 1), chain);
}

TEST(PropertyDepth, AChainIsAChildThatIsReplacedAndRemoved)
{
    Property group("group");
    group.Add(Chain(kDepth));
    group.SetChild("g");
    EXPECT_EQ(Property("g"), group["g"]);
    group.SetChild("g", Chain(kDepth));
    group.SetChildT("g", 1LL);
    EXPECT_EQ(Property("g", 1), group["g"]);
    group.SetChild("g", Chain(kDepth));
    group.RemoveChild("g");
    EXPECT_EQ(0u, group.Count());
}

TEST(PropertyDepth, ASaveRefusesAChainWithoutRecursion)
{
    rapidjson::Document document;
    document.SetInt(7);
    const Property chain = Chain(kDepth);
    const auto thrown = Testing::ExpectThrow<PropertyException>(
        [&] { PropertySerializer::Save(chain, document, document.GetAllocator()); });
    EXPECT_EQ("g: groups are nested deeper than 512", thrown.description);
    EXPECT_EQ(7, document.GetInt());
}

TEST(PropertyDepth, AChainOfTenThousandIsPrinted)
{
    constexpr std::streamsize kPrinted = 10000;
    CountingBuffer buffer;
    std::ostream os(&buffer);
    PrintPropertyValue(Chain(kPrinted), 0, os, true, true);
    // Each level's blanks and "g:\n", then the innermost line "leaf: 1\n".
    EXPECT_EQ(kPrinted * (kPrinted - 1) + 3 * kPrinted + 2 * kPrinted + 8, buffer.count);
}

} // namespace Zelnor::Core
