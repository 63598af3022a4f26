#pragma once

#include "Core/Interfaces/Utf8.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// A drawing of a graph, read by the rules of Graphviz's language as far as a graph uses them. What breaks a
/// rule, or is beyond what Graphviz can hold, is a std::logic_error.
class Drawing
{
public:
    explicit Drawing(std::string_view text) : m_text(text)
    {
        Expect("digraph G {\n");
        while (!Take("}\n"))
        {
            ReadStatement();
        }
        Require(m_text.empty(), "an end");
        for (const auto& [from, to] : links)
        {
            Require(from < nodes && to < nodes, "a link between nodes");
        }
    }

    std::size_t nodes = 0;
    std::vector<std::pair<std::size_t, std::size_t>> links;

private:
    static void Require(bool holds, const std::string& what)
    {
        if (!holds)
        {
            throw std::logic_error("the drawing lacks " + what);
        }
    }

    bool Take(std::string_view piece)
    {
        const bool isThere = m_text.substr(0, piece.size()) == piece;
        m_text.remove_prefix(isThere ? piece.size() : 0);
        return isThere;
    }

    void Expect(std::string_view piece) { Require(Take(piece), std::string(piece)); }

    std::size_t ReadNumber()
    {
        const std::size_t length = m_text.find_first_not_of("0123456789");
        Require(length != 0 && length != std::string_view::npos, "a number");
        const std::size_t number = std::stoul(std::string(m_text.substr(0, length)));
        m_text.remove_prefix(length);
        return number;
    }

    void ReadStatement()
    {
        const std::size_t node = ReadNumber();
        if (Take("->"))
        {
            links.emplace_back(node, ReadNumber());
            Expect(" ");
            if (Take(";\n"))
            {
                return;
            }
        }
        else
        {
            Require(node == nodes++, "nodes in order");
        }
        Expect("[label=\"");
        ReadLabel();
        Expect("];\n");
    }

    /// Up to the closing quote.
    void ReadLabel()
    {
        std::size_t line = 0;
        std::size_t stretch = 0;
        while (!Take("\""))
        {
            const std::string_view character = ReadCharacter();
            const bool isEscape = character.front() == '\\';
            const bool endsLine = character == "\n" || character == "\\n";
            line = endsLine ? 0 : line + (character == "\\\n" ? 0 : 1);
            Require(line <= 2'700, "a line break after 2,700 characters");
            stretch = isEscape ? 0 : stretch + character.size();
            Require(stretch < 16'384, "a backslash in each 16 KiB");
        }
    }

    std::string_view ReadCharacter()
    {
        Require(!m_text.empty(), "the end of a label");
        std::size_t length = Core::Utf8Length(m_text);
        if (m_text.front() == '\\')
        {
            const bool isOctal = m_text.size() > 1 && m_text[1] >= '0' && m_text[1] <= '7';
            length = isOctal ? 4 : 2;
            Require(m_text.size() > length, "what an escape is about");
            Require(m_text.substr(0, length).find_first_not_of("01234567", 1) == std::string_view::npos ||
                        (!isOctal && std::string_view("\"\\nrt\n").find(m_text[1]) != std::string_view::npos),
                    "escapes that are known");
        }
        else if (m_text.substr(0, 5) == "&amp;")
        {
            length = 5;
        }
        else
        {
            Require(length != 0, "UTF-8 alone");
            Require(m_text.front() == '\n' || static_cast<unsigned char>(m_text.front()) >= 0x20,
                    "escapes for control characters");
        }
        const std::string_view character = m_text.substr(0, length);
        m_text.remove_prefix(length);
        return character;
    }

    std::string_view m_text;
};

} // namespace Zelnor::Testing
