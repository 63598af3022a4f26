// Writes a manual page for each command of zconf: what the commands say of themselves, around what was
// written by hand. The latter begins with the description, which is the command's own sentence where nobody
// wrote one, and goes on with sections of its own.

#include "Tools/zconf/Commands/ShellCompletion.h"

#include <algorithm>
#include <cctype>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelnor::Docs
{

namespace
{

using Tool::CommandUsage;
using Tool::OptionUsage;

/// What is written by hand for a page.
struct Part
{
    std::string description;
    std::string sections;
};

std::string PageName(std::string path)
{
    std::replace(path.begin(), path.end(), ' ', '-');
    return path;
}

/// Text as roff reads it: nothing of it is a request, and hyphens stay those that can be copied.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text)
    {
        if (escaped.empty() && (c == '.' || c == '\''))
        {
            escaped += "\\&";
        }
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return escaped;
}

std::string Bold(const std::string& text) { return "\\fB" + Escaped(text) + "\\fR"; }
std::string Italic(const std::string& text) { return "\\fI" + Escaped(text) + "\\fR"; }

std::string Sentence(const std::string& text)
{
    return Escaped(text) + (text.empty() || text.back() == '.' ? "" : ".");
}

std::string Reference(const std::string& path) { return ".BR " + Escaped(PageName(path)) + " (1)"; }

Part ReadPart(const std::filesystem::path& file, const CommandUsage& command)
{
    std::ifstream stream(file);
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    const std::size_t end = text.rfind(".SH ", 0) == 0 ? 0 : text.find("\n.SH ") + 1;
    Part part;
    part.description = text.substr(0, end == 0 && !text.empty() && text.front() != '.' ? text.size() : end);
    part.sections = text.substr(part.description.size());
    if (part.description.empty())
    {
        part.description = Sentence(command.help) + "\n";
    }
    return part;
}

std::string Synopsis(const CommandUsage& command)
{
    std::string text = Bold(command.path) + " [" + Italic("OPTION") + "]...";
    for (const OptionUsage& option : command.options)
    {
        if (option.isRequired)
        {
            text += " " +
                    Bold(option.names.back().size() > 2 && option.names.size() > 1 ? option.names[1]
                                                                                   : option.names.front()) +
                    " " + Italic(option.value);
        }
    }
    for (const OptionUsage& argument : command.arguments)
    {
        const std::string name = Italic(argument.names.front()) + (argument.isRepeatable ? "..." : "");
        text += " " + (argument.isRequired ? name : "[" + name + "]");
    }
    return text + (command.commands.empty() ? "" : " " + Italic("COMMAND") + " ...") + "\n";
}

std::string Choices(const OptionUsage& option)
{
    if (option.choices.size() == 1)
    {
        return "\nThe only value is " + Bold(option.choices.front()) + ".";
    }
    std::string text;
    for (const std::string& choice : option.choices)
    {
        text += (text.empty() ? "\nOne of " : ", ") + Bold(choice);
    }
    return text + (text.empty() ? "" : ".");
}

std::string OptionText(const OptionUsage& option)
{
    std::string names;
    for (const std::string& name : option.names)
    {
        names += (names.empty() ? "" : ", ") + (name.front() == '-' ? Bold(name) : Italic(name));
    }
    const bool hasValue = !option.value.empty() && option.names.front().front() == '-';
    return ".TP\n" + names + (hasValue ? " " + Italic(option.value) : "") + "\n" + Sentence(option.help) +
           Choices(option) + "\n";
}

bool IsOfEveryCommand(const OptionUsage& option)
{
    return option.names.back() == "--help" || option.names.back() == "--version";
}

std::string Options(const std::string& title, std::vector<OptionUsage> options)
{
    std::stable_partition(options.begin(), options.end(),
                          [](const OptionUsage& option) { return !IsOfEveryCommand(option); });
    std::string text = options.empty() ? "" : ".SH " + title + "\n";
    for (const OptionUsage& option : options)
    {
        text += OptionText(option);
    }
    return text;
}

std::string Commands(const CommandUsage& command)
{
    std::string text = command.commands.empty() ? "" : ".SH COMMANDS\n";
    for (const CommandUsage& below : command.commands)
    {
        text += ".TP\n" + Reference(below.path) + "\n" + Sentence(below.help) + "\n";
    }
    return text;
}

/// That of the page, else that of the group.
std::string ExitStatus(const Part& part, const Part& groupPart)
{
    const std::string title = ".SH EXIT STATUS\n";
    if (part.sections.find(title) != std::string::npos)
    {
        return "";
    }
    const std::size_t start = groupPart.sections.find(title);
    if (start == std::string::npos)
    {
        return title + "0 on success, 2 after an error.\n";
    }
    return groupPart.sections.substr(start, groupPart.sections.find(".SH", start + 1) - start);
}

/// The group that holds the command, and the commands beside it.
std::string SeeAlso(const CommandUsage& command, const CommandUsage* group)
{
    std::vector<std::string> paths;
    if (group != nullptr)
    {
        paths.push_back(group->path);
        for (const CommandUsage& beside : group->commands)
        {
            if (beside.path != command.path)
            {
                paths.push_back(beside.path);
            }
        }
    }
    std::string text = ".SH SEE ALSO\n";
    for (const std::string& path : paths)
    {
        text += Reference(path) + ",\n";
    }
    return text + ".BR ffmpeg (1)\n";
}

/// The page's name and what it is about, in a line.
std::string Head(const CommandUsage& command)
{
    const std::string name = PageName(command.path);
    std::string title = name;
    std::transform(title.begin(), title.end(), title.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    std::string help = command.help;
    help.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(help.front())));
    help.erase(help.find_last_not_of('.') + 1);
    return ".\\\" Written by the target \"manual\" from the commands and from Docs/man/parts.\n"
           ".TH " +
           Escaped(title) + " 1 \"\" \"zconf " ZELNOR_VERSION "\" \"User Commands\"\n.SH NAME\n" +
           Escaped(name) + " \\- " + Escaped(help) + "\n";
}

class Manual
{
public:
    Manual(std::filesystem::path parts, std::filesystem::path pages)
        : m_parts(std::move(parts)), m_pages(std::move(pages))
    {}

    /// Writes the page of the command, and those of the commands below it.
    void Write(const CommandUsage& command, const CommandUsage* group = nullptr)
    {
        const std::string name = PageName(command.path);
        const Part part = PartOf(command);
        // Exit codes of the whole program are listed on its own page.
        const Part groupPart =
            group == nullptr || group->path.find(' ') == std::string::npos ? Part{} : PartOf(*group);
        std::ofstream page(m_pages / (name + ".1"), std::ios::binary);
        page << Head(command) << ".SH SYNOPSIS\n"
             << Synopsis(command) << ".SH DESCRIPTION\n"
             << part.description << Options("ARGUMENTS", command.arguments)
             << Options("OPTIONS", command.options) << Commands(command) << part.sections
             << ExitStatus(part, groupPart) << SeeAlso(command, group);
        page.close();
        if (!page)
        {
            throw std::runtime_error(name + ".1 cannot be written");
        }
        for (const CommandUsage& below : command.commands)
        {
            Write(below, &command);
        }
    }

    /// \throw std::runtime_error when a part belongs to no command
    void RequireKnownParts() const
    {
        for (const auto& entry : std::filesystem::directory_iterator(m_parts))
        {
            if (std::find(m_known.begin(), m_known.end(), entry.path().filename()) == m_known.end())
            {
                throw std::runtime_error("no command has the part " + entry.path().filename().string());
            }
        }
    }

private:
    Part PartOf(const CommandUsage& command)
    {
        const std::filesystem::path file = m_parts / (PageName(command.path) + ".roff");
        m_known.push_back(file.filename());
        return ReadPart(file, command);
    }

    std::filesystem::path m_parts;
    std::filesystem::path m_pages;
    std::vector<std::filesystem::path> m_known;
};

} // namespace

} // namespace Zelnor::Docs

int main(int argc, char** argv)
{
    try
    {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        if (arguments.size() != 2)
        {
            throw std::runtime_error("expected the folder of the parts and the folder of the pages");
        }
        Zelnor::Docs::Manual manual(arguments[0], arguments[1]);
        manual.Write(Zelnor::Tool::ProgramUsage());
        manual.RequireKnownParts();
        return 0;
    }
    catch (const std::exception& error)
    {
        std::cerr << "ZelnorManual: " << error.what() << "\n";
        return 1;
    }
}
