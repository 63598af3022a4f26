// Linked with the libraries and with a module whose libraries are the next major version's: the same names,
// twice in one process.

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/IFormatCodec.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>

extern "C" bool UseTheLibraries();

namespace
{

/// Where a library has its constant. Two libraries have two, or each destroys what the other has.
const void* AddressIn(const char* library)
{
    void* const handle = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    return handle == nullptr ? nullptr
                             : dlsym(handle, "_ZN6Zelnor4Conf12IFormatCodec13CODEC_ID_NONEB5cxx11E");
}

TEST(TwoMajorVersions, AreUsedInOneProcess)
{
    EXPECT_TRUE(UseTheLibraries());
    EXPECT_EQ(Zelnor::Conf::CodecIDFromTextID("CODEC_ID_NONE"), AV_CODEC_ID_NONE);
    EXPECT_EQ(Zelnor::Conf::CodecIDToTextID(AV_CODEC_ID_NONE), Zelnor::Conf::IFormatCodec::CODEC_ID_NONE);
}

TEST(TwoMajorVersions, HaveTheirOwnObjects)
{
    const void* const own = AddressIn(ZELNOR_CONF_LIBRARY);
    const void* const next = AddressIn(ZELNOR_NEXT_CONF_LIBRARY);
    ASSERT_NE(own, nullptr);
    ASSERT_NE(next, nullptr);
    EXPECT_NE(own, next);
}

TEST(TwoMajorVersions, EndWithTheProcess)
{
    EXPECT_EXIT(std::exit(UseTheLibraries() ? 0 : 1), testing::ExitedWithCode(0), "");
}

} // namespace
