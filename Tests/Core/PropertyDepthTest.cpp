// Trees so deep that a walk which recursed once a level would overflow the stack.

#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertySerializer.h"

#include "Tests/Support/Expect.h"

#include <gtest/gtest.h>
#include <rapidjson/document.h>

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
    EXPECT_EQ(copy, chain);
    copy["g"]["g"].CreateChildT("more", 1LL);
    EXPECT_NE(copy, chain);
    EXPECT_NE(Chain(kDepth - 1), chain);
}

TEST(PropertyDepth, AChainIsAssignedOver)
{
    const Property chain = Chain(kDepth);
    Property target = Chain(kDepth);
    target = chain;
    EXPECT_EQ(target, chain);
    target = 1LL;
    EXPECT_EQ(target, Property("g", 1));
    target = Chain(kDepth);
    target = "text";
    target = Chain(kDepth);
    target = Property::Ratio(1, 2);
    target = Chain(kDepth);
    target = Property("small");
    EXPECT_EQ(target.Count(), 0u);
}

TEST(PropertyDepth, AChainTakesAPartOfItself)
{
    Property chain = Chain(kDepth);
    chain = chain["g"];
    EXPECT_EQ(chain, Chain(kDepth - 1));
    chain = std::move(chain["g"]);
    EXPECT_EQ(chain, Chain(kDepth - 2));
    chain.SetChild("g", chain);
    EXPECT_EQ(chain, Chain(kDepth - 1));
}

TEST(PropertyDepth, AChainIsAChildThatIsReplacedAndRemoved)
{
    Property group("group");
    group.Add(Chain(kDepth));
    group.SetChild("g");
    EXPECT_EQ(group["g"], Property("g"));
    group.SetChild("g", Chain(kDepth));
    group.SetChildT("g", 1LL);
    EXPECT_EQ(group["g"], Property("g", 1));
    group.SetChild("g", Chain(kDepth));
    group.RemoveChild("g");
    EXPECT_EQ(group.Count(), 0u);
}

TEST(PropertyDepth, ASaveRefusesAChainWithoutRecursion)
{
    rapidjson::Document document;
    document.SetInt(7);
    const Property chain = Chain(kDepth);
    const auto thrown = Testing::ExpectThrow<PropertyException>(
        [&] { PropertySerializer::Save(chain, document, document.GetAllocator()); });
    std::string path = "g";
    for (int i = 0; i < PropertySerializer::kMaxDepth; ++i)
    {
        path += ".g";
    }
    EXPECT_EQ(thrown.description, path + ": groups are nested deeper than 512");
    EXPECT_EQ(document.GetInt(), 7);
}

TEST(PropertyDepth, AChainOfTenThousandIsPrinted)
{
    constexpr std::streamsize kPrinted = 10000;
    CountingBuffer buffer;
    std::ostream os(&buffer);
    PrintPropertyValue(Chain(kPrinted), 0, os, true, true);
    // Each level's blanks and "g:\n", then the innermost line "leaf: 1\n".
    EXPECT_EQ(buffer.count, kPrinted * (kPrinted - 1) + 3 * kPrinted + 2 * kPrinted + 8);
}

} // namespace Zelnor::Core
