#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace Zelnor::Testing
{

/// Graphviz's `dot`, as an oracle for what is valid in its language.
class Dot
{
public:
    static bool IsInstalled() { return std::system("dot -V >/dev/null 2>&1") == 0; }

    /// What `dot -T<format>` writes for `text`. It is expected to succeed and to say nothing.
    static std::string Run(const std::string& text, const std::string& format)
    {
        return Execute("dot -T" + format, text);
    }

    /// `text` as Graphviz reads it, written anew without being drawn.
    static std::string Reprint(const std::string& text) { return Execute("nop", text); }

private:
    static std::string Execute(const std::string& program, const std::string& text)
    {
        const std::string base = ::testing::TempDir() + "zelnor-dot-" + std::to_string(::getpid());
        std::ofstream(base + ".dot", std::ios::binary) << text;
        const std::string command = program + " '" + base + ".dot' >'" + base + ".out' 2>'" + base + ".err'";
        const int status = std::system(command.c_str());
        const std::string out = Contents(base + ".out");
        const std::string messages = Contents(base + ".err");
        for (const char* const extension : {".dot", ".out", ".err"})
        {
            std::remove((base + extension).c_str());
        }
        EXPECT_EQ(status, 0) << messages << text.substr(0, 1000);
        EXPECT_EQ(messages, "") << text.substr(0, 1000);
        return out;
    }

    static std::string Contents(const std::string& path)
    {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
};

} // namespace Zelnor::Testing
