#pragma once

#include "Tests/Support/Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// Runs the command line in a folder of its own, which is gone afterwards.
class ZconfTest : public testing::Test
{
protected:
    static constexpr const char* kUnlinked = R"({"vertices":[{"id":1},{"id":2}],"edges":[]})";
    static constexpr const char* kValid =
        R"({"vertices":[{"id":1},{"id":2}],"edges":[{"id":1,"from":1,"to":2}]})";

    ZconfTest()
    {
        std::string pattern = testing::TempDir() + "zconf-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr)
        {
            throw std::runtime_error("no folder for the test");
        }
        m_folder = pattern;
    }
    ~ZconfTest() override { std::filesystem::remove_all(m_folder); }

    const std::filesystem::path& Folder() const { return m_folder; }

    ProcessResult Zconf(std::vector<std::string> arguments, ProcessOptions options = {}) const
    {
        arguments.insert(arguments.begin(), ZCONF_PROGRAM);
        options.folder = m_folder.string();
        return RunProcess(arguments, options);
    }
    /// A line for the shell, in which $ZCONF is the program.
    ProcessResult Shell(const std::string& line, ProcessOptions options = {}) const
    {
        options.folder = m_folder.string();
        options.environment.emplace_back("ZCONF=" ZCONF_PROGRAM);
        return RunProcess({"bash", "-c", line}, options);
    }

    std::string Write(const std::string& name, const std::string& text) const
    {
        std::ofstream(m_folder / name, std::ios::binary) << text;
        return name;
    }
    std::string Read(const std::string& name) const
    {
        std::ifstream file(m_folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Exists(const std::string& name) const { return std::filesystem::exists(m_folder / name); }
    /// The names of all files in the folder, in order.
    std::vector<std::string> Files() const
    {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder))
        {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path m_folder;
};

/// The command did its work and had nothing to say about it.
inline void ExpectQuietSuccess(const ProcessResult& result)
{
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.messages, "");
}

/// The command failed with exactly this one line.
inline void ExpectFailure(const ProcessResult& result, const std::string& sentence)
{
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.messages, "zconf: " + sentence + "\n");
}

} // namespace Zelnor::Testing
