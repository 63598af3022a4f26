#include "Core/Interfaces/RefCountImpl.h"

#include <gtest/gtest.h>

namespace Zelnor
{

TEST(RefCountImpl, CountsFromZero)
{
    const RefCountImpl count;
    EXPECT_EQ(0, count.GetRefCountImpl());
    EXPECT_EQ(1, count.AddRefImpl());
    EXPECT_EQ(2, count.AddRefImpl());
    EXPECT_EQ(2, count.GetRefCountImpl());
    EXPECT_EQ(1, count.ReleaseImpl());
    EXPECT_EQ(0, count.ReleaseImpl());
    EXPECT_EQ(0, count.GetRefCountImpl());
}

TEST(RefCountImpl, ACopyStartsAfreshAndAssigningChangesNothing)
{
    RefCountImpl count;
    count.AddRefImpl();
    RefCountImpl copy(count);
    EXPECT_EQ(0, copy.GetRefCountImpl());
    copy.AddRefImpl();
    copy.AddRefImpl();
    count = copy;
    EXPECT_EQ(1, count.GetRefCountImpl());
}

} // namespace Zelnor
