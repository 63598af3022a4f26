#include "Media/Running/TargetFile.h"

#include "Media/MediaException.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <string>

namespace
{

using namespace Zelnor::Testing;
using testing::ElementsAre;
using Zelnor::Media::MediaException;
using Zelnor::Media::RunException;
using Zelnor::Media::TargetFile;

namespace fs = std::filesystem;

class TargetFiles : public testing::Test
{
protected:
    std::string Name(const std::string& name = "out") const { return (m_folder / name).string(); }

    unsigned PermissionsOf(const std::string& name) const
    {
        struct stat status = {};
        EXPECT_EQ(::stat(Name(name).c_str(), &status), 0);
        return status.st_mode & 07777U;
    }

    void ExpectRefused(const std::string& name, bool overwrite, const std::string& sentence) const
    {
        const Thrown thrown = ExpectThrow<RunException>([&] { TargetFile(name, overwrite); });
        EXPECT_EQ(thrown.description, sentence);
        EXPECT_EQ(thrown.Get<MediaException::TagFile>(), name);
    }

    TemporaryFolder m_folder;
};

TEST_F(TargetFiles, AppearWhenTheyAreComplete)
{
    TargetFile target(Name(), false);
    WriteFile(target.GetWorkName(), "new");
    EXPECT_FALSE(fs::exists(Name()));
    target.Commit();
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
    EXPECT_EQ(ReadFile(Name()), "new");
}

TEST_F(TargetFiles, LeaveNothingWithoutCommit)
{
    {
        const TargetFile target(Name(), false);
        WriteFile(target.GetWorkName(), "half");
    }
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(TargetFiles, ReplaceOnlyWhenTheyMay)
{
    WriteFile(Name(), "old");
    ExpectRefused(Name(), false, "'" + Name() + "' exists already; the option 'overwrite' replaces it");
    {
        TargetFile target(Name(), true);
        WriteFile(target.GetWorkName(), "new");
        EXPECT_EQ(ReadFile(Name()), "old");
        target.Commit();
    }
    EXPECT_EQ(ReadFile(Name()), "new");
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
}

TEST_F(TargetFiles, KeepAFileThatAppearsMeanwhile)
{
    {
        TargetFile target(Name(), false);
        WriteFile(target.GetWorkName(), "new");
        WriteFile(Name(), "other");
        const Thrown thrown = ExpectThrow<RunException>([&] { target.Commit(); });
        EXPECT_EQ(thrown.description, "Cannot write '" + Name() + "': File exists");
        EXPECT_EQ(thrown.Get<MediaException::TagFile>(), Name());
    }
    EXPECT_EQ(ReadFile(Name()), "other");
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
}

TEST_F(TargetFiles, FollowALink)
{
    fs::create_directory(m_folder / "there");
    WriteFile(m_folder / "there/file", "old");
    fs::create_symlink("there/file", Name());
    TargetFile target(Name(), true);
    EXPECT_EQ(fs::canonical(target.GetWorkName()).parent_path().parent_path(),
              fs::canonical(m_folder / "there"));
    WriteFile(target.GetWorkName(), "new");
    target.Commit();
    EXPECT_TRUE(fs::is_symlink(Name()));
    EXPECT_EQ(ReadFile(m_folder / "there/file"), "new");
}

TEST_F(TargetFiles, FollowALinkToAFileThatIsNotThereYet)
{
    fs::create_directory(m_folder / "there");
    fs::create_symlink("there/file", Name());
    TargetFile target(Name(), false);
    WriteFile(target.GetWorkName(), "new");
    target.Commit();
    EXPECT_TRUE(fs::is_symlink(Name()));
    EXPECT_EQ(ReadFile(m_folder / "there/file"), "new");
}

TEST_F(TargetFiles, AreKeptBesideTheFileThatALinkLeadsTo)
{
    fs::create_directory(m_folder / "there");
    fs::create_symlink("there/film.mp4", Name());
    TargetFile target(Name(), false);
    WriteFile(target.GetWorkName(), "new");
    EXPECT_EQ(target.KeepAside(), Name("there/film.unverified.mp4"));
    EXPECT_EQ(ReadFile(m_folder / "there/film.unverified.mp4"), "new");
}

TEST_F(TargetFiles, AreKeptBesideLongNamesUnderPartsOfThem)
{
    // Cut where a character ends, although the place for it is in the middle of one.
    std::string stem;
    while (stem.size() + 2 <= NAME_MAX - 4)
    {
        stem += "\u00E4";
    }
    TargetFile target(Name(stem + ".mp4"), false);
    WriteFile(target.GetWorkName(), "new");
    const std::string kept = stem.substr(0, (NAME_MAX - 15) / 2 * 2) + ".unverified.mp4";
    EXPECT_EQ(target.KeepAside(), Name(kept));
    EXPECT_EQ(ReadFile(m_folder / kept), "new");
    EXPECT_THAT(m_folder.Names(), testing::ElementsAre(kept));
}

TEST_F(TargetFiles, DoNotFollowLinksInACircle)
{
    fs::create_symlink("there", Name());
    fs::create_symlink("out", Name("there"));
    const std::string reason = "Cannot write '" + Name() + "': Too many levels of symbolic links";
    ExpectRefused(Name(), false, reason);
    ExpectRefused(Name(), true, reason);
    EXPECT_TRUE(fs::is_symlink(Name()));
    EXPECT_THAT(m_folder.Names(), testing::UnorderedElementsAre("out", "there"));
}

TEST_F(TargetFiles, WithNamesThatAreTooLongAreRefusedBeforeTheyAreWritten)
{
    const std::string name = (m_folder / std::string(NAME_MAX + 1, 'x')).string();
    ExpectRefused(name, false, "Cannot write '" + name + "': File name too long");
    EXPECT_THAT(m_folder.Names(), testing::IsEmpty());
}

TEST_F(TargetFiles, LeaveADeviceInItsPlace)
{
    TargetFile target("/dev/null", false);
    EXPECT_EQ(target.GetWorkName(), "/dev/null");
    target.Commit();
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(TargetFiles, LeaveAPipeInItsPlace)
{
    ASSERT_EQ(::mkfifo(Name().c_str(), 0600), 0);
    {
        TargetFile target(Name(), false);
        EXPECT_EQ(target.GetWorkName(), Name());
        target.Commit();
    }
    EXPECT_TRUE(fs::is_fifo(Name()));
}

TEST_F(TargetFiles, AreNotWhatIsOnlyOpen)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const std::string name = "/proc/self/fd/" + std::to_string(ends[1]);
    ExpectRefused(name, true, "Cannot write '" + name + "': it has no name of its own");
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(TargetFiles, NeedAFolder)
{
    ExpectRefused(Name("none/out"), false,
                  "Cannot write '" + Name("none/out") + "': No such file or directory");
    ExpectRefused(m_folder.Path().string(), true,
                  "Cannot write '" + m_folder.Path().string() + "': Is a directory");
    WriteFile(Name("file"), "");
    ExpectRefused(Name("file/out"), false, "Cannot write '" + Name("file/out") + "': Not a directory");
}

TEST_F(TargetFiles, NeedAName)
{
    ExpectRefused("", false, "'' is not a name for a target");
    const std::string cut = Name() + std::string("\0x", 2);
    ExpectRefused(cut, true, "'" + cut + "' is not a name for a target");
}

TEST_F(TargetFiles, GetThePermissionsOfNewFiles)
{
    const mode_t former = ::umask(027);
    {
        TargetFile target(Name(), false);
        WriteFile(target.GetWorkName(), "new");
        target.Commit();
    }
    ::umask(former);
    EXPECT_EQ(PermissionsOf("out"), 0640U);
}

TEST_F(TargetFiles, KeepOwnerAndGroupWhereTheProcessMayGiveFilesAway)
{
    if (::geteuid() != 0)
    {
        GTEST_SKIP() << "only root may give files away";
    }
    constexpr unsigned kSomebody = 12345;
    WriteFile(Name(), "old");
    ASSERT_EQ(::chown(Name().c_str(), kSomebody, kSomebody + 1), 0);
    ASSERT_EQ(::chmod(Name().c_str(), 06755), 0);
    TargetFile file(Name(), true);
    WriteFile(file.GetWorkName(), "new");
    file.Commit();
    struct stat status = {};
    ASSERT_EQ(::stat(Name().c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, kSomebody);
    EXPECT_EQ(status.st_gid, kSomebody + 1);
    EXPECT_EQ(PermissionsOf("out"), 0755U) << "what another program wrote must not run as its owner";
}

TEST_F(TargetFiles, KeepThePermissionsOfTheFileThatTheyReplace)
{
    for (const unsigned permissions : {0600U, 0640U, 0666U, 0440U, 0755U, 0200U})
    {
        SCOPED_TRACE(permissions);
        WriteFile(Name(), "old");
        ::chmod(Name().c_str(), permissions);
        TargetFile target(Name(), true);
        struct stat status = {};
        ASSERT_EQ(::stat(target.GetWorkName().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0077U & ~permissions, 0U) << "more open while it is written";
        WriteFile(target.GetWorkName(), "new");
        target.Commit();
        EXPECT_EQ(PermissionsOf("out"), permissions);
        EXPECT_EQ(ReadFile(Name()), "new");
        fs::remove(Name());
    }
}

TEST_F(TargetFiles, MayHaveTheLongestName)
{
    const std::string longest(255, 'x');
    TargetFile target(Name(longest), false);
    WriteFile(target.GetWorkName(), "new");
    target.Commit();
    EXPECT_THAT(m_folder.Names(), ElementsAre(longest));
}

TEST_F(TargetFiles, StayWhereTheyAreWhenTheProcessMoves)
{
    const fs::path former = fs::current_path();
    fs::current_path(m_folder.Path());
    TargetFile target("out", false);
    WriteFile(target.GetWorkName(), "new");
    fs::current_path("/");
    target.Commit();
    fs::current_path(former);
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
}

TEST_F(TargetFiles, OfTheSameNameDoNotDisturbEachOther)
{
    TargetFile one(Name(), false);
    TargetFile other(Name(), false);
    WriteFile(one.GetWorkName(), "one");
    WriteFile(other.GetWorkName(), "other");
    EXPECT_EQ(m_folder.Names().size(), 2U);
    one.Commit();
    EXPECT_THROW(other.Commit(), RunException);
    EXPECT_EQ(ReadFile(Name()), "one");
}

TEST_F(TargetFiles, AreMadeWhereNobodyElseCanReach)
{
    const TargetFile target(Name(), false);
    struct stat status = {};
    ASSERT_EQ(::stat(fs::path(target.GetWorkName()).parent_path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    EXPECT_EQ(target.GetPassLog(), fs::path(target.GetWorkName()).parent_path().string() + "/pass-");
}

TEST_F(TargetFiles, AreNotLedElsewhereByAFolderInThePlaceOfTheirs)
{
    TargetFile target(Name(), false);
    ASSERT_EQ(m_folder.Names().size(), 1U);
    const std::string work = m_folder.Names().front();
    fs::create_directory(m_folder / "victim");
    WriteFile(m_folder / "victim/output", "precious");
    fs::rename(Name(work), Name("moved"));
    fs::create_directory_symlink("victim", Name(work));
    WriteFile(target.GetWorkName(), "new");
    target.Commit();
    EXPECT_EQ(ReadFile(m_folder / "victim/output"), "precious");
    EXPECT_EQ(ReadFile(Name()), "new");
}

TEST_F(TargetFiles, AreNotReplacedByALinkThatTheProgramLeft)
{
    WriteFile(Name("secret"), "precious");
    {
        TargetFile target(Name(), false);
        fs::remove(target.GetWorkName());
        fs::create_symlink(Name("secret"), target.GetWorkName());
        EXPECT_EQ(ExpectThrow<RunException>([&] { target.Commit(); }).description,
                  "Cannot write '" + Name() + "': Too many levels of symbolic links");
    }
    EXPECT_THAT(m_folder.Names(), ElementsAre("secret"));
    EXPECT_EQ(ReadFile(Name("secret")), "precious");
}

TEST_F(TargetFiles, AreNotOtherDevicesAndSockets)
{
    ExpectRefused("/dev/full", true, "Cannot write '/dev/full': it is a device");
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    Name("s").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ExpectRefused(Name("s"), true, "Cannot write '" + Name("s") + "': it is a socket");
    ::close(socket);
}

TEST_F(TargetFiles, ThatAreWrittenDirectlyLeaveThePassLogsElsewhere)
{
    std::string passLog;
    {
        const TargetFile target("/dev/null", false);
        passLog = target.GetPassLog();
        WriteFile(passLog + "0-0.log", "x");
    }
    EXPECT_FALSE(fs::exists(passLog + "0-0.log"));
}

} // namespace
