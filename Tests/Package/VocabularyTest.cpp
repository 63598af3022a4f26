#include "Tests/Package/VocabularyReader.h"

#include <gtest/gtest.h>

namespace Zelnor::Testing
{

TEST(Vocabulary, IsThereWhenAnotherLibrarysStaticObjectsAreMade)
{
    EXPECT_GT(GetConstantsReadAtLoad().size(), 800U);
    for (const Constant& constant : GetConstantsReadAtLoad())
    {
        EXPECT_EQ(constant.read, constant.expected) << constant.name;
    }
}

} // namespace Zelnor::Testing
