#include "Media/Running/QualityMeasurement.h"

#include "Media/Probe/Demuxers.h"
#include "Media/Running/Subprocess.h"

#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Running/QualityMeasurement";

/// The number behind "key:" in a line of such pairs.
std::optional<double> NumberAfter(const std::string& line, const std::string& key)
{
    const std::size_t place = (" " + line).find(" " + key + ":");
    if (place == std::string::npos)
    {
        return std::nullopt;
    }
    std::istringstream stream(line.substr(place + key.size() + 1));
    stream.imbue(std::locale::classic());
    double number = 0;
    return stream >> number ? std::optional(number) : std::nullopt;
}

void AddInput(const std::string& name, const std::string& demuxer, std::vector<std::string>& words)
{
    words.insert(words.end(), {"-protocol_whitelist", "file", "-f", demuxer});
    if (demuxer == kImageDemuxer)
    {
        words.insert(words.end(), {"-pattern_type", "none"});
    }
    words.insert(words.end(), {"-i", FFmpegFileName(name)});
}

/// \param before  may be empty
std::string Joined(const std::string& before, const std::string& filter)
{
    return before + (before.empty() ? "" : ",") + filter;
}

/// The frames of both are paired by their numbers: containers round times.
std::string Graph(const std::string& reference, const std::string& made, const Core::Property& record)
{
    const auto rate = record.FindChild(Conf::IFormatCodecVideo::TAG_FPS);
    const std::string fps = rate == record.end() ? ""
                                                 : "fps=" + std::to_string(rate->GetRatio().numerator()) +
                                                       "/" + std::to_string(rate->GetRatio().denominator());
    const std::string number = "settb=1/25,setpts=N";
    return reference + number + ",split[reference1][reference2];" + made + Joined(fps, number) +
           ",split[made1][made2];[made1][reference1]psnr=stats_file=-:shortest=1[psnr];"
           "[made2][reference2]ssim=stats_file=-:shortest=1[ssim]";
}

/// Drops what ffmpeg drops behind the filters, where it does not seek in the sources; empty when it does.
std::string Part(const TranscodeCommand& transcode)
{
    const MediaSpan& span = transcode.span;
    if (transcode.seeksInInputs || (span.start == 0 && !span.end))
    {
        return "";
    }
    return "trim=start=" + std::to_string(span.start) + "us" +
           (span.end ? ":end=" + std::to_string(*span.end) + "us" : "") + ",";
}

/// One video of a finished file.
struct MadeVideo
{
    const TranscodeStream& stream;
    const StreamCommand& command;
    unsigned int index; ///< in the file
};

std::vector<std::string> Words(const TranscodeCommand& transcode, const MediaFile& made,
                               const MadeVideo& video, const std::string& ffmpeg)
{
    std::vector<std::string> words = {ffmpeg, "-hide_banner", "-nostdin", "-v", "error", "-nostats"};
    for (const InputCommand& input : transcode.inputs)
    {
        // The same part of the source as the video was made from.
        if (transcode.span.end && transcode.seeksInInputs)
        {
            words.insert(words.end(),
                         {"-t", std::to_string(*transcode.span.end - transcode.span.start) + "us"});
        }
        if (transcode.span.start > 0 && transcode.seeksInInputs)
        {
            words.insert(words.end(), {"-ss", std::to_string(transcode.span.start) + "us"});
        }
        AddInput(input.file, input.demuxer, words);
    }
    AddInput(made.name, made.demuxer.substr(0, made.demuxer.find(',')), words);
    const StreamCommand& command = video.command;
    const std::string from = command.merge.empty() ? "[" + std::to_string(command.input) + ":" +
                                                         std::to_string(command.stream) + "]"
                                                   : command.merge + ",";
    const std::string filters = (command.filters.empty() ? "" : command.filters + ",") + Part(transcode);
    const std::string to =
        "[" + std::to_string(transcode.inputs.size()) + ":" + std::to_string(video.index) + "]";
    words.insert(words.end(), {"-filter_complex", Graph(from + filters, to, video.stream.codec), "-map",
                               "[psnr]", "-map", "[ssim]", "-f", "null", FFmpegFileName("/dev/null")});
    return words;
}

/// Cuts what comes in blocks into lines.
class LineReader
{
public:
    explicit LineReader(std::function<void(const std::string&)> take) : m_take(std::move(take)) {}

    void Add(std::string_view bytes)
    {
        m_rest += bytes;
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = m_rest.find('\n', begin)) != std::string::npos; begin = end + 1)
        {
            m_take(m_rest.substr(begin, end - begin));
        }
        m_rest.erase(0, begin);
    }

private:
    std::function<void(const std::string&)> m_take;
    std::string m_rest;
};

void MeasureOne(const MadeVideo& video, const std::vector<std::string>& words, const VerifyOptions& options,
                TargetVerification& verification)
{
    QualityMeter meter;
    std::string lastMessage;
    LineReader lines([&meter](const std::string& line) { meter.Take(line); });
    LineReader messages([&lastMessage](const std::string& line) { lastMessage = line; });
    SubprocessOptions process;
    process.onOutput = [&lines](std::string_view bytes) { lines.Add(bytes); };
    process.onMessages = [&messages](std::string_view bytes) { messages.Add(bytes); };
    process.isCancelled = [&options] { return options.cancel.IsCancelled(); };
    process.inOwnGroup = true;
    int exitCode = 0;
    try
    {
        exitCode = RunSubprocess(words, process);
    }
    catch (const SubprocessError& error)
    {
        ZELNOR_THROW(kUnit, MakeError<RunException>(error.what()));
    }
    const std::optional<VideoQuality> quality = meter.Get();
    if (exitCode == 0 && quality)
    {
        verification.quality.push_back(*quality);
        verification.quality.back().place = video.stream.place;
    }
    else if (!options.cancel.IsCancelled())
    {
        verification.notes.push_back("the quality of '" + verification.file + "' cannot be measured: " +
                                     (lastMessage.empty() ? "there is no frame to compare" : lastMessage));
    }
}

} // namespace

void QualityMeter::Take(const std::string& line)
{
    const auto error = NumberAfter(line, "mse_avg");
    const auto psnr = NumberAfter(line, "psnr_avg");
    const auto similarity = NumberAfter(line, "All");
    constexpr double kDecibel = 10;
    if (error)
    {
        m_error += *error;
        ++m_psnrFrames;
        if (psnr && *error > 0)
        {
            m_square = std::max(m_square, *error * std::pow(kDecibel, *psnr / kDecibel));
        }
    }
    else if (similarity)
    {
        m_similarity += *similarity;
        ++m_ssimFrames;
    }
}

std::optional<VideoQuality> QualityMeter::Get() const
{
    if (m_psnrFrames == 0 || m_ssimFrames == 0)
    {
        return std::nullopt;
    }
    constexpr double kDecibel = 10;
    VideoQuality quality;
    if (m_error > 0)
    {
        quality.psnr = kDecibel * std::log10(m_square * static_cast<double>(m_psnrFrames) / m_error);
    }
    quality.ssim = m_similarity / static_cast<double>(m_ssimFrames);
    return quality;
}

void MeasureQuality(const Transcode& transcode, const TranscodeCommand& command, const VerifyOptions& options,
                    TargetVerification& verification)
{
    std::optional<MediaFile> made;
    try
    {
        made = ProbeMedia(transcode.output);
    }
    catch (const ProbeException&)
    {
        // That it cannot be read is a difference.
        return;
    }
    unsigned int index = 0;
    for (std::size_t i = 0; i < transcode.streams.size(); ++i)
    {
        const TranscodeStream& stream = transcode.streams[i];
        if (transcode.SourceOf(stream).kind != StreamKind::Video)
        {
            continue;
        }
        while (index < made->streams.size() && made->streams[index].kind != StreamKind::Video)
        {
            ++index;
        }
        if (index < made->streams.size() && !command.streams[i].isCopied && !options.cancel.IsCancelled())
        {
            const MadeVideo video = {stream, command.streams[i], index};
            MeasureOne(video, Words(command, *made, video, options.ffmpeg), options, verification);
        }
        ++index;
    }
}

} // namespace Zelnor::Media
