#include "Media/Verifying/Numbers.h"

#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>

namespace Zelnor::Media
{

std::string DecimalText(double value)
{
    constexpr int kDigits = 3;
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(kDigits) << value;
    return text.str();
}

std::string SecondsText(std::int64_t microseconds)
{
    constexpr double kMicrosecondsInASecond = 1e6;
    return DecimalText(static_cast<double>(microseconds) / kMicrosecondsInASecond) + " s";
}

std::string BitrateText(double bitsPerSecond)
{
    constexpr double kKilo = 1000;
    return std::to_string(std::llround(bitsPerSecond / kKilo)) + " kb/s";
}

bool IsNear(double value, double wanted, double part)
{
    return std::abs(value - wanted) <= part * std::abs(wanted);
}

} // namespace Zelnor::Media
