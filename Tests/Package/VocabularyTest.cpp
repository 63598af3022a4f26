#include "Tests/Package/VocabularyReader.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

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

/// Where another library finds the constant.
const std::string* AddressInReader(const std::string& name)
{
    const std::vector<Constant>& constants = GetConstantsReadAtLoad();
    const auto found = std::find_if(constants.begin(), constants.end(),
                                    [&](const Constant& constant) { return constant.name == name; });
    return found == constants.end() ? nullptr : found->address;
}

TEST(Vocabulary, HasOneObjectOfEachConstantInAProgramAndItsLibraries)
{
    EXPECT_EQ(AddressInReader("IFormatFile::FORMAT_MP4"), &Conf::IFormatFile::FORMAT_MP4);
    EXPECT_EQ(AddressInReader("IFormatCodecAudio::TAG_CH_LAYOUT_STEREO"),
              &Conf::IFormatCodecAudio::TAG_CH_LAYOUT_STEREO);
    EXPECT_EQ(Conf::LayoutRecord::Find("STEREO")->textId, &Conf::IFormatCodecAudio::TAG_CH_LAYOUT_STEREO);
}

TEST(Vocabulary, HasStringsThatAreWhole)
{
    for (const Constant& constant : GetConstantsReadAtLoad())
    {
        const std::string& text = *constant.address;
        EXPECT_EQ(std::strlen(text.c_str()), text.size()) << constant.name;
        EXPECT_GE(text.capacity(), text.size()) << constant.name;
        EXPECT_EQ(text, constant.expected) << constant.name;
    }
}

TEST(Vocabulary, IsCopiedIntoStringsOfTheirOwn)
{
    for (const Constant& constant : GetConstantsReadAtLoad())
    {
        std::string copy = *constant.address;
        ASSERT_NE(copy.data(), constant.address->data()) << constant.name;
        copy += " and more than a string holds without memory of its own";
        copy[0] = '#';
        EXPECT_EQ(*constant.address, constant.expected);
    }
}

} // namespace Zelnor::Testing
