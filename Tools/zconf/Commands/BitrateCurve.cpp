#include "Tools/zconf/Commands/BitrateCurve.h"

#include "Media/Running/Subprocess.h"
#include "Tools/zconf/Console/Errors.h"

#include "Conf/Interfaces/BitrateCalculator.h"

#include <algorithm>
#include <numeric>

namespace Zelnor::Tool
{

namespace
{

using Calculate = long long (*)(const std::string&, long long, long long, double, int);

constexpr long long kSteps = 120;
constexpr long long kLeastHeight = 1080;

/// Lines of "height bitrate", for heights from 0 to `highest`.
std::string Points(const BitrateQuestion& question, Calculate calculate, long long highest)
{
    std::string points;
    for (long long step = 0; step <= kSteps; ++step)
    {
        const long long height = highest * step / kSteps;
        const long long width = height * question.size.width / question.size.height;
        points += std::to_string(height) + " " +
                  std::to_string(calculate(question.codecId, width, height, question.fps, question.quality)) +
                  "\n";
    }
    return points;
}

/// "16:9", for square samples
std::string AspectRatioText(const FrameSize& size)
{
    const long long divisor = std::gcd(size.width, size.height);
    return std::to_string(size.width / divisor) + ":" + std::to_string(size.height / divisor);
}

} // namespace

std::string BitrateCurveScript(const BitrateQuestion& question)
{
    const Calculate calculateDefault = &Conf::GetDefaultVideoBitrate;
    const Calculate calculateMin = &Conf::GetMinVideoBitrate;
    const Calculate calculateMax = &Conf::GetMaxVideoBitrate;
    const long long highest = std::max(kLeastHeight, question.size.height * 3 / 2);
    const std::string mark =
        std::to_string(question.size.height) + " " +
        std::to_string(calculateDefault(question.codecId, question.size.width, question.size.height,
                                        question.fps, question.quality)) +
        "\n";
    const std::string curve = "'-' using 1:($2/1e6) with ";
    std::string script = "set terminal svg size 900,540 noenhanced background 'white'\n"
                         "set encoding utf8\n"
                         "set title '" +
                         question.codecId + ", display aspect ratio " + AspectRatioText(question.size) +
                         ", " + FieldText(question.fps) +
                         " fps'\n"
                         "set xlabel 'Frame height'\n"
                         "set ylabel 'Mbit/s'\n"
                         "set key left top\n"
                         "set grid\n"
                         "plot " +
                         curve + "lines lw 2 title 'maximum', " + curve + "lines lw 2 title 'default', " +
                         curve + "lines lw 2 title 'minimum', " + curve + "points pt 7 title '" +
                         FieldText(std::vector{question.size}) + "'\n";
    for (const Calculate calculate : {calculateMax, calculateDefault, calculateMin})
    {
        script += Points(question, calculate, highest) + "e\n";
    }
    return script + mark + "e\n";
}

std::string DrawBitrateCurve(const BitrateQuestion& question)
{
    const Media::FilterResult result = Media::RunFilter({"gnuplot"}, BitrateCurveScript(question));
    if (!result.started)
    {
        throw ToolError("Drawing the curve needs gnuplot, which is not in PATH");
    }
    if (result.exitCode != 0 || result.output.empty())
    {
        const std::string message = result.messages.substr(0, result.messages.find('\n'));
        throw ToolError("gnuplot failed with exit code " + std::to_string(result.exitCode) +
                        (message.empty() ? "" : ": " + message));
    }
    return result.output;
}

} // namespace Zelnor::Tool
