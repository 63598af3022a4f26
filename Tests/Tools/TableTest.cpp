#include "Tools/zconf/Console/Table.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

using namespace Zelnor::Tool;

const Painter kUncoloured(false);

TEST(Table, AlignsColumnsAndDoesNotPadTheLastCell)
{
    Table table;
    table.AddRow({{"a"}, {"1"}, {"x"}});
    table.AddRow({{"long"}, {"22"}, {"yy"}});
    table.AddRow({{"b"}});
    EXPECT_EQ(table.Text(kUncoloured), "a     1   x\n"
                                       "long  22  yy\n"
                                       "b\n");
}

TEST(Table, IndentsEveryRow)
{
    Table table(2);
    table.AddRow({{"a"}, {"b"}});
    table.AddRow({{"c"}});
    EXPECT_EQ(table.Text(kUncoloured), "  a  b\n  c\n");
}

TEST(Table, WithoutRowsIsEmpty) { EXPECT_EQ(Table(4).Text(kUncoloured), ""); }

TEST(Table, ARowWithoutCellsIsAnEmptyLine)
{
    Table table;
    table.AddRow({});
    EXPECT_EQ(table.Text(kUncoloured), "\n");
}

TEST(Table, ACellWiderThanFortyCharactersDoesNotWidenItsColumn)
{
    Table table;
    table.AddRow({{std::string(40, 'a')}, {"1"}});
    table.AddRow({{std::string(41, 'b')}, {"2"}});
    table.AddRow({{"c"}, {"3"}});
    EXPECT_EQ(table.Text(kUncoloured), std::string(40, 'a') + "  1\n" + std::string(41, 'b') + "  2\nc" +
                                           std::string(39, ' ') + "  3\n");
}

TEST(Table, CountsCharactersNotBytes)
{
    Table table;
    table.AddRow({{"\xc3\xa4"}, {"1"}});
    table.AddRow({{"bb"}, {"2"}});
    EXPECT_EQ(table.Text(kUncoloured), "\xc3\xa4   1\nbb  2\n");
}

TEST(Table, EscapesWhatWouldBreakALine)
{
    Table table;
    table.AddRow({{"a\nb"}, {"\x1b[2J"}});
    table.AddRow({{"c"}, {"d"}});
    EXPECT_EQ(table.Text(kUncoloured), "a\\nb  \\x1b[2J\nc     d\n");
}

TEST(Table, ColoursCellsWithoutMovingTheColumns)
{
    Table table;
    table.AddRow({{"a", Style::Key}, {"1"}});
    table.AddRow({{"bb", Style::Bad}, {"2", Style::Id}});
    EXPECT_EQ(table.Text(Painter(true)), "\x1b[36ma\x1b[0m   1\n"
                                         "\x1b[1;31mbb\x1b[0m  \x1b[1;33m2\x1b[0m\n");
}

} // namespace
