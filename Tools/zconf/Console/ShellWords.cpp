#include "Tools/zconf/Console/ShellWords.h"

#include <algorithm>
#include <string_view>

namespace Zelnor::Tool
{

namespace
{

bool IsPlain(char c)
{
    constexpr std::string_view kPlain = "%+,-./:=@_";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           kPlain.find(c) != std::string_view::npos;
}

std::string Quoted(const std::string& word)
{
    if (!word.empty() && std::all_of(word.begin(), word.end(), IsPlain))
    {
        return word;
    }
    std::string quoted = "'";
    for (const char c : word)
    {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

} // namespace

std::string ShellLine(const std::vector<std::string>& words)
{
    std::string line;
    for (const std::string& word : words)
    {
        line += (line.empty() ? "" : " ") + Quoted(word);
    }
    return line;
}

} // namespace Zelnor::Tool
