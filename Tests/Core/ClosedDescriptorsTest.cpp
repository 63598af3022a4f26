// Files in a process without standard streams: theirs are the numbers that were free.

#include "Core/Interfaces/DataStream.h"

#include "Tests/Support/FileFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace Zelnor::Core
{

namespace
{

using Testing::Put;
using Testing::ReadFile;
using Testing::RunForked;
using Testing::WriteFile;

constexpr int kSuccess = 0;

bool IsOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) >= 0; }

class ClosedDescriptors : public ::testing::Test
{
protected:
    /// Runs `action` without standard input, and expects that it leaves nothing open in its place.
    template <class Action>
    static void ExpectSuccessWithoutInput(Action action)
    {
        EXPECT_EQ(RunForked([&action] {
                      ::close(STDIN_FILENO);
                      const bool succeeded = action();
                      return succeeded && !IsOpen(STDIN_FILENO) ? kSuccess : 1;
                  }),
                  kSuccess);
    }

    Testing::TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder / "file";
};

TEST_F(ClosedDescriptors, AreEnoughToReadAFile)
{
    WriteFile(m_file, "text");
    ExpectSuccessWithoutInput([this] {
        const auto input = FileDataInput::Create(m_file);
        char buffer[5] = {};
        return IsOpen(STDIN_FILENO) && input->Read(buffer, 4) == 4 && std::string(buffer) == "text";
    });
}

TEST_F(ClosedDescriptors, AreEnoughToWriteAFile)
{
    ExpectSuccessWithoutInput([this] {
        const auto output = FileDataOutput::Create(m_file);
        Put(*output, "text");
        return IsOpen(STDIN_FILENO);
    });
    EXPECT_EQ(ReadFile(m_file), "text");
}

TEST_F(ClosedDescriptors, AreEnoughToReplaceAFile)
{
    WriteFile(m_file, "old");
    ExpectSuccessWithoutInput([this] {
        const auto output = AtomicFileDataOutput::Create(m_file);
        Put(*output, "new");
        output->Commit();
        return IsOpen(STDIN_FILENO);
    });
    EXPECT_EQ(ReadFile(m_file), "new");
    EXPECT_EQ(m_folder.Names().size(), 1u);
}

TEST_F(ClosedDescriptors, AreClosedAgainWhenASaveIsGivenUp)
{
    ExpectSuccessWithoutInput([this] {
        ::close(STDOUT_FILENO);
        {
            const auto output = AtomicFileDataOutput::Create(m_file);
            Put(*output, "new");
        }
        return !IsOpen(STDOUT_FILENO);
    });
    EXPECT_TRUE(m_folder.Names().empty());
}

} // namespace

} // namespace Zelnor::Core
