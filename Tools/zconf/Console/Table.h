#pragma once

#include "Tools/zconf/Console/Terminal.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// Lays out rows of cells in columns. Cells are printed as `Printable` makes them.
class Table
{
public:
    struct Cell
    {
        std::string text;
        Style style = Style::Plain;
    };

    /// \param indent  blanks before each row
    explicit Table(std::size_t indent = 0) : m_indent(indent) {}

    void AddRow(std::vector<Cell> cells);
    /// The rows as lines. The last cell of a row is not padded, and a cell wider than 40 characters does not
    /// widen its column.
    std::string Text(const Painter& paint) const;

private:
    std::size_t m_indent;
    std::vector<std::vector<Cell>> m_rows;
};

} // namespace Zelnor::Tool
