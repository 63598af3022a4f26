#pragma once

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// A document of ours, for tests that compare it with what the libraries do.
class Document
{
public:
    /// \param name  below Docs/
    explicit Document(const std::string& name)
    {
        std::ifstream file(ZELNOR_SOURCE_DIR "/Docs/" + name);
        for (std::string line; std::getline(file, line);)
        {
            m_lines.push_back(line);
        }
        if (m_lines.empty())
        {
            throw std::runtime_error("there is no document " + name);
        }
    }

    /// The first block of code in that language.
    std::string Block(const std::string& language) const
    {
        std::string text;
        bool isInside = false;
        for (const std::string& line : m_lines)
        {
            if (isInside && line == "```")
            {
                return text;
            }
            text += isInside ? line + "\n" : "";
            isInside = isInside || line == "```" + language;
        }
        throw std::runtime_error("there is no block of " + language);
    }

    /// The rows of the table whose header begins with `header`, cell by cell, without back quotes around
    /// cells.
    std::vector<std::vector<std::string>> Table(const std::string& header) const
    {
        std::vector<std::vector<std::string>> rows;
        bool isInside = false;
        for (const std::string& line : m_lines)
        {
            if (isInside && line.rfind("|", 0) != 0)
            {
                break;
            }
            if (isInside && line.rfind("|---", 0) != 0)
            {
                rows.push_back(Cells(line));
            }
            isInside = isInside || line.rfind("| " + header + " |", 0) == 0;
        }
        if (rows.empty())
        {
            throw std::runtime_error("there is no table of " + header);
        }
        return rows;
    }

    /// The whole text without blanks and line ends.
    std::string WithoutBlanks() const
    {
        std::string text;
        for (const std::string& line : m_lines)
        {
            std::copy_if(line.begin(), line.end(), std::back_inserter(text), [](char c) { return c != ' '; });
        }
        return text;
    }

private:
    static std::vector<std::string> Cells(const std::string& line)
    {
        std::vector<std::string> cells;
        std::istringstream stream(line.substr(1));
        for (std::string cell; std::getline(stream, cell, '|');)
        {
            const std::size_t first = cell.find_first_not_of(' ');
            cell =
                first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(' ') - first + 1);
            const bool isName =
                cell.size() > 1 && cell.find('`') == 0 && cell.find('`', 1) == cell.size() - 1;
            cells.push_back(isName ? cell.substr(1, cell.size() - 2) : cell);
        }
        return cells;
    }

    std::vector<std::string> m_lines;
};

} // namespace Zelnor::Testing
