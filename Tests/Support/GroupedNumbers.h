#pragma once

#include <locale>
#include <string>

namespace Zelnor::Testing
{

/// As long as it lives, the global locale writes 12345 as 12.345 and a decimal comma.
class GroupedNumbers
{
public:
    GroupedNumbers() : m_before(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
    GroupedNumbers(const GroupedNumbers&) = delete;
    GroupedNumbers& operator=(const GroupedNumbers&) = delete;
    ~GroupedNumbers() { std::locale::global(m_before); }

private:
    struct Punctuation : std::numpunct<char>
    {
        char do_thousands_sep() const override { return '.'; }
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale m_before;
};

} // namespace Zelnor::Testing
