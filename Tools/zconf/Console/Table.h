#pragma once

#include "Tools/zconf/Console/Terminal.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// Lines of cells that stand below each other. Cells are printed as `Printable` makes them.
class Table
{
public:
    struct Cell
    {
        std::string text;
        Style style = Style::Plain;
    };

    /// \param indent  blanks before each line
    explicit Table(std::size_t indent = 0) : m_indent(indent) {}

    void AddRow(std::vector<Cell> cells);
    /// The lines, each ended by a line break. The last cell of a line is not padded, and no cell wider than
    /// 40 columns widens its column.
    std::string Text(const Painter& paint) const;

private:
    std::size_t m_indent;
    std::vector<std::vector<Cell>> m_rows;
};

} // namespace Zelnor::Tool
