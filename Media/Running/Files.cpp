#include "Media/Running/Files.h"

#include "Core/Private/FileReplacement.h"
#include "Media/Folder.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <locale.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <filesystem>
#include <optional>
#include <system_error>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;

std::string IdentityOf(const struct stat& status)
{
    return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

/// The name with its ASCII letters in the other case.
std::string OtherCase(std::string name)
{
    constexpr char kCaseBit = 0x20;
    for (char& c : name)
    {
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        c = isLetter ? static_cast<char>(c ^ kCaseBit) : c;
    }
    return name;
}

/// Nothing when there is no file in the folder whose name has letters.
std::optional<bool> AskFilesIn(DIR* folder)
{
    constexpr int kMostFiles = 64;
    const int descriptor = ::dirfd(folder);
    for (int i = 0; i < kMostFiles; ++i)
    {
        const dirent* const entry = ::readdir(folder);
        if (entry == nullptr)
        {
            return std::nullopt;
        }
        const std::string name = entry->d_name;
        const std::string other = OtherCase(name);
        struct stat one = {};
        if (other == name || ::fstatat(descriptor, name.c_str(), &one, AT_SYMLINK_NOFOLLOW) != 0)
        {
            continue;
        }
        struct stat found = {};
        if (::fstatat(descriptor, other.c_str(), &found, AT_SYMLINK_NOFOLLOW) != 0 ||
            IdentityOf(one) != IdentityOf(found))
        {
            return false;
        }
        if (one.st_nlink == 1)
        {
            // Two names, one link.
            return true;
        }
    }
    return std::nullopt;
}

/// Whether the folder's file system is one that may fold case.
bool MayFoldCase(int folder)
{
    constexpr std::uint32_t kExFat = 0x2011BAB0;
    constexpr std::uint32_t kNtfs = 0x5346544E;
    constexpr std::uint32_t kNtfs3 = 0x7366746E;
    constexpr std::uint32_t kCifs = 0xFF534D42;
    constexpr std::uint32_t kSmb2 = 0xFE534D42;
    constexpr std::uint32_t kHfs = 0x4244;
    constexpr std::uint32_t kHfsPlus = 0x482B;
    constexpr std::uint32_t kFuse = 0x65735546;
    constexpr std::uint32_t kSharedFolder = 0x786F4256;
    constexpr std::array<std::uint32_t, 12> kSystems = {
        MSDOS_SUPER_MAGIC, kExFat, kNtfs,    kNtfs3, kCifs,         kSmb2,
        SMB_SUPER_MAGIC,   kHfs,   kHfsPlus, kFuse,  kSharedFolder, V9FS_MAGIC};
    struct statfs system = {};
    return ::fstatfs(folder, &system) == 0 &&
           std::find(kSystems.begin(), kSystems.end(), static_cast<std::uint32_t>(system.f_type)) !=
               kSystems.end();
}

/// Letters of UTF-8, whatever the process's locale is, for as long as there is one of these.
class Utf8Letters
{
public:
    Utf8Letters() : m_former(::uselocale(Locale())) {}
    ~Utf8Letters() { ::uselocale(m_former); }
    Utf8Letters(const Utf8Letters&) = delete;
    Utf8Letters& operator=(const Utf8Letters&) = delete;

private:
    static locale_t Locale()
    {
        static const locale_t s_locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return s_locale; // null leaves the thread's locale
    }

    locale_t m_former;
};

} // namespace

std::string FileIdentity(const std::string& name)
{
    struct stat status = {};
    if (::stat(name.c_str(), &status) == 0)
    {
        return IdentityOf(status);
    }
    const fs::path path = ResolveLinks(name);
    if (::stat(path.parent_path().c_str(), &status) == 0)
    {
        // No folder's own identity is like that.
        const std::string file = path.filename().string();
        return IdentityOf(status) + "/" + (FoldsCase(path.parent_path().string()) ? FoldCase(file) : file);
    }
    std::error_code error;
    const fs::path canonical = fs::weakly_canonical(path, error);
    return error ? name : canonical.string();
}

bool IsSameFile(const std::string& one, const std::string& other)
{
    return FileIdentity(one) == FileIdentity(other);
}

std::string ResolveLinks(const std::string& name)
{
    const std::optional<fs::path> target = Core::FollowLinks(name);
    return target ? target->string() : name;
}

bool FoldsCase(const std::string& folder)
{
    const Folder opened(::opendir(folder.c_str()));
    if (opened == nullptr)
    {
        return false;
    }
    const int descriptor = ::dirfd(opened.get());
    int flags = 0;
    if (::ioctl(descriptor, FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_CASEFOLD_FL) != 0)
    {
        return true;
    }
    const std::optional<bool> answer = AskFilesIn(opened.get());
    return answer ? *answer : MayFoldCase(descriptor);
}

std::string FoldCase(const std::string& name)
{
    const Utf8Letters letters;
    std::string folded;
    std::mbstate_t state = {};
    for (std::size_t i = 0; i < name.size();)
    {
        wchar_t letter = 0;
        const std::size_t length = std::mbrtowc(&letter, &name[i], name.size() - i, &state);
        std::array<char, MB_LEN_MAX> bytes = {};
        const bool isLetter = length != 0 && length <= name.size() - i;
        const std::size_t size =
            isLetter ? std::wcrtomb(bytes.data(),
                                    static_cast<wchar_t>(::towlower(static_cast<wint_t>(letter))), &state)
                     : 0;
        if (size == 0 || size > bytes.size())
        {
            // Not UTF-8: the byte as it is.
            folded += name[i++];
            state = {};
            continue;
        }
        folded.append(bytes.data(), size);
        i += length;
    }
    return folded;
}

} // namespace Zelnor::Media
