// Not linked with our libraries: they come with the module, and shall go with it.

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>

#if defined(__SANITIZE_ADDRESS__)
#define ZELNOR_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZELNOR_ADDRESS_SANITIZER
#endif
#endif

namespace
{

bool IsLoaded(const std::string& library)
{
    void* const handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr)
    {
        dlclose(handle);
    }
    return handle != nullptr;
}

void LoadUseAndUnload()
{
    void* const module = dlopen(ZELNOR_MODULE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(module, nullptr) << dlerror();
    EXPECT_TRUE(IsLoaded(ZELNOR_CORE_LIBRARY));
    EXPECT_TRUE(IsLoaded(ZELNOR_CONF_LIBRARY));
    const auto use = reinterpret_cast<bool (*)()>(dlsym(module, "UseTheLibraries"));
    ASSERT_NE(use, nullptr);
    EXPECT_TRUE(use());

    EXPECT_EQ(dlclose(module), 0);

    EXPECT_FALSE(IsLoaded(ZELNOR_MODULE));
    EXPECT_FALSE(IsLoaded(ZELNOR_CONF_LIBRARY));
    EXPECT_FALSE(IsLoaded(ZELNOR_CORE_LIBRARY));
}

TEST(Libraries, LeaveMemoryTogetherWithTheirLog)
{
#ifdef ZELNOR_ADDRESS_SANITIZER
    GTEST_SKIP() << "glog loses the memory of its flags when it is unloaded";
#endif
    LoadUseAndUnload();
    LoadUseAndUnload();
}

TEST(Libraries, LeaveMemoryWhenTheirLogStays)
{
    ASSERT_NE(dlopen(ZELNOR_GLOG_LIBRARY, RTLD_NOW | RTLD_LOCAL), nullptr) << dlerror();
    LoadUseAndUnload();
    LoadUseAndUnload();
}

} // namespace
