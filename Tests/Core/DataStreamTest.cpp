#include "Core/Interfaces/DataStream.h"

#include "Tests/Support/Expect.h"
#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <type_traits>

namespace Zelnor::Core
{

namespace
{

namespace fs = std::filesystem;
using Testing::ExpectFailure;
using Testing::ExpectThrow;
using Testing::ModeOf;
using Testing::Put;
using Testing::ReadFile;
using Testing::TemporaryFolder;
using Testing::Umask;
using Testing::Unprivileged;
using Testing::WriteFile;

static_assert(std::is_abstract_v<IDataInput> && std::is_abstract_v<IDataOutput>);
static_assert(std::is_convertible_v<FileDataInput*, IRefCountable*>);

std::string ReadAll(IDataInput& input, std::size_t block)
{
    std::string all;
    std::string buffer(block, '\0');
    while (const std::size_t count = input.Read(buffer.data(), block))
    {
        all.append(buffer, 0, count);
    }
    return all;
}

} // namespace

TEST(FileDataInput, ReadsBlocksOfAnySizeUpToTheEnd)
{
    const TemporaryFolder folder;
    std::string text = "0123456789";
    text += '\0';
    text += std::string(100000, 'x');
    WriteFile(folder / "file", text);
    for (const std::size_t block : {1u, 7u, 4096u, 200000u})
    {
        const auto input = FileDataInput::Create(folder / "file");
        EXPECT_EQ(input->GetRefCount(), 1);
        EXPECT_EQ(ReadAll(*input, block), text);
        char more = 'm';
        EXPECT_EQ(input->Read(&more, 1), 0u) << "the end stays the end";
        EXPECT_EQ(more, 'm');
    }
}

TEST(FileDataInput, EmptyReadIsNotTheEnd)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "a");
    const auto input = FileDataInput::Create(folder / "file");
    EXPECT_EQ(input->Read(nullptr, 0), 0u);
    EXPECT_EQ(ReadAll(*input, 10), "a");
}

TEST(FileDataInput, NamesTheFileAndTheReasonWhenItIsMissing)
{
    const TemporaryFolder folder;
    const std::string name = (folder / "absent").string();
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataInput::Create(name); }),
                  "Cannot open '" + name + "': No such file or directory", "FileDataInput::Create(");
}

TEST(FileDataInput, OfAFolderFailsWhenRead)
{
    const TemporaryFolder folder;
    const auto input = FileDataInput::Create(folder.Path());
    char byte = 0;
    ExpectFailure(ExpectThrow<CoreException>([&] { input->Read(&byte, 1); }),
                  "Cannot read '" + folder.Path().string() + "': Is a directory", "FileDataInput::Read(");
}

TEST(FileDataInput, NamesTheReasonWhenItMayNotBeRead)
{
    const TemporaryFolder folder;
    fs::permissions(folder.Path(), fs::perms::all);
    WriteFile(folder / "secret", "x");
    fs::permissions(folder / "secret", fs::perms::none);
    const std::string name = (folder / "secret").string();
    const Unprivileged somebody;
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataInput::Create(name); }),
                  "Cannot open '" + name + "': Permission denied", "FileDataInput::Create(");
}

TEST(FileDataInput, RefusesANameWithNul)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "x");
    const std::string name = (folder / "file").string() + std::string("\0.txt", 5);
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataInput::Create(name); }),
                  "Cannot open '" + name + "': Invalid argument", "FileDataInput::Create(");
}

TEST(FileDataOutput, EmptiesTheFileAtOnceAndHoldsNothingBack)
{
    const TemporaryFolder folder;
    WriteFile(folder / "file", "old contents");
    const auto output = FileDataOutput::Create(folder / "file");
    EXPECT_EQ(output->GetRefCount(), 1);
    EXPECT_EQ(ReadFile(folder / "file"), "");
    Put(*output, "new");
    EXPECT_EQ(ReadFile(folder / "file"), "new");
    output->Write(nullptr, 0);
    Put(*output, std::string("\0er", 3));
    EXPECT_EQ(ReadFile(folder / "file"), std::string("new\0er", 6));
}

TEST(FileDataOutput, NamesTheFileAndTheReasonOfAFailure)
{
    const TemporaryFolder folder;
    const std::string absent = (folder / "absent/file").string();
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataOutput::Create(absent); }),
                  "Cannot write '" + absent + "': No such file or directory", "FileDataOutput::Create(");
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataOutput::Create(folder.Path()); }),
                  "Cannot write '" + folder.Path().string() + "': Is a directory", "FileDataOutput::Create(");
    ExpectFailure(ExpectThrow<CoreException>([&] { FileDataOutput::Create(""); }),
                  "Cannot write '': No such file or directory", "FileDataOutput::Create(");
}

TEST(FileDataOutput, ToAFullDeviceFails)
{
    const auto output = FileDataOutput::Create("/dev/full");
    ExpectFailure(ExpectThrow<CoreException>([&] { Put(*output, "x"); }),
                  "Cannot write '/dev/full': No space left on device", "FileDataOutput::Write(");
}

TEST(FileDataOutput, RespectsTheMaskForNewFiles)
{
    const TemporaryFolder folder;
    const Umask mask(027);
    FileDataOutput::Create(folder / "file");
    EXPECT_EQ(ModeOf(folder / "file"), 0640u);
}

TEST(MemoryDataInput, ReadsBlocksOfAnySizeUpToTheEnd)
{
    const std::string bytes("a\0b\xff", 4);
    for (const std::size_t block : {1u, 3u, 4u, 100u})
    {
        const auto input = MemoryDataInput::Create(bytes);
        EXPECT_EQ(input->GetRefCount(), 1);
        EXPECT_EQ(input->Read(nullptr, 0), 0u);
        EXPECT_EQ(ReadAll(*input, block), bytes);
    }
    char byte = 0;
    EXPECT_EQ(MemoryDataInput::Create("")->Read(&byte, 1), 0u);
}

TEST(MemoryDataOutput, CollectsBytes)
{
    const auto output = MemoryDataOutput::Create();
    EXPECT_EQ(output->GetRefCount(), 1);
    EXPECT_EQ(output->GetData(), "");
    output->Write(nullptr, 0);
    Put(*output, std::string("a\0", 2));
    Put(*output, "b");
    EXPECT_EQ(output->GetData(), std::string("a\0b", 3));
}

} // namespace Zelnor::Core
