#include "Tools/zconf/Console/Table.h"

#include "Tools/zconf/Console/Text.h"

#include <algorithm>
#include <utility>

namespace Zelnor::Tool
{

namespace
{

constexpr std::size_t kWidestColumn = 40;
constexpr std::size_t kGap = 2;

std::vector<std::size_t> ColumnWidths(const std::vector<std::vector<Table::Cell>>& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows)
    {
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
        {
            widths.resize(std::max(widths.size(), i + 1));
            const std::size_t width = Columns(row[i].text);
            widths[i] = width > kWidestColumn ? widths[i] : std::max(widths[i], width);
        }
    }
    return widths;
}

} // namespace

void Table::AddRow(std::vector<Cell> cells)
{
    for (Cell& cell : cells)
    {
        cell.text = Printable(cell.text);
    }
    m_rows.push_back(std::move(cells));
}

std::string Table::Text(const Painter& paint) const
{
    const std::vector<std::size_t> widths = ColumnWidths(m_rows);
    std::string text;
    for (const auto& row : m_rows)
    {
        text.append(m_indent, ' ');
        for (std::size_t i = 0; i < row.size(); ++i)
        {
            text += paint(row[i].style, row[i].text);
            if (i + 1 < row.size())
            {
                const std::size_t width = Columns(row[i].text);
                text.append((width < widths[i] ? widths[i] - width : 0) + kGap, ' ');
            }
        }
        text += '\n';
    }
    return text;
}

} // namespace Zelnor::Tool
