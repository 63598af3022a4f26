#include "Media/Probe/MediaProbe.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Probe/FrameLook.h"
#include "Media/Probe/FrameRates.h"
#include "Media/Probe/MediaInput.h"
#include "Media/Probe/StreamDescription.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <sstream>

#include <fcntl.h>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatFile;
using Core::Property;

std::vector<std::string> Words(const std::string& list)
{
    std::vector<std::string> words;
    std::istringstream stream(list);
    for (std::string word; std::getline(stream, word, ',');)
    {
        words.push_back(word);
    }
    return words;
}

/// One demuxer serves several containers; the brand inside the file tells which one it is.
std::string MovContainer(const AVDictionary* tags)
{
    const AVDictionaryEntry* const brand = av_dict_get(tags, "major_brand", nullptr, 0);
    const std::string text = brand == nullptr ? "" : brand->value;
    return text.rfind("qt", 0) == 0                                 ? IFormatFile::FORMAT_MOV
           : text.rfind("M4A", 0) == 0                              ? IFormatFile::FORMAT_M4A
           : text.rfind("3g2", 0) == 0                              ? IFormatFile::FORMAT_3G2
           : text.rfind("3gp", 0) == 0 || text.rfind("3gs", 0) == 0 ? IFormatFile::FORMAT_3GP
           : brand == nullptr                                       ? IFormatFile::FORMAT_MOV
                                                                    : IFormatFile::FORMAT_MP4;
}

/// The vocabulary's name of what FFmpeg's demuxer reads; empty when there is none.
std::string ContainerOf(const std::string& demuxer, const AVDictionary* tags, const std::string& extension)
{
    const std::vector<std::string> names = Words(demuxer);
    if (std::find(names.begin(), names.end(), "mov") != names.end())
    {
        return MovContainer(tags);
    }
    if (demuxer == "aac")
    {
        return IFormatFile::FORMAT_ADTS;
    }
    if (std::find(names.begin(), names.end(), extension) != names.end() && Conf::IsContainer(extension))
    {
        return extension;
    }
    const auto found = std::find_if(names.begin(), names.end(), Conf::IsContainer);
    return found == names.end() ? "" : *found;
}

/// "2026-11-20T22:51:20Z"
std::string TimeText(std::int64_t seconds)
{
    const std::time_t time = seconds;
    std::tm fields = {};
    char text[32] = "";
    if (::gmtime_r(&time, &fields) == nullptr ||
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &fields) == 0)
    {
        return "";
    }
    return text;
}

void AddFileAttributes(const std::string& name, Property& record)
{
    record.SetChildT(IFormatFile::TAG_FILE_PATH, name);
    std::string extension = std::filesystem::path(name).extension().string();
    extension.erase(0, 1);
    record.SetChildT(IFormatFile::TAG_FILE_EXTENSION, extension);
    struct statx attributes = {};
    if (::statx(AT_FDCWD, name.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &attributes) != 0)
    {
        return;
    }
    record.SetChildT(IFormatFile::TAG_FORMAT_FILE_SIZE, static_cast<long long>(attributes.stx_size));
    const auto addTime = [&](unsigned int bit, const std::string& key, const statx_timestamp& time) {
        if ((attributes.stx_mask & bit) != 0)
        {
            record.SetChildT(key, TimeText(time.tv_sec));
        }
    };
    addTime(STATX_BTIME, IFormatFile::TAG_FILE_CREATE_TIME, attributes.stx_btime);
    addTime(STATX_MTIME, IFormatFile::TAG_FILE_MODIFY_TIME, attributes.stx_mtime);
    addTime(STATX_ATIME, IFormatFile::TAG_FILE_LAST_ACCESS_TIME, attributes.stx_atime);
}

void DescribeFile(AVFormatContext& context, bool isFile, MediaFile& file)
{
    Property record = file.descriptor->GetProperty();
    AddTags(context.metadata, record[Conf::IFormat::TAG_METADATA]);
    std::string extension;
    if (isFile)
    {
        AddFileAttributes(file.name, record);
        extension = record[IFormatFile::TAG_FILE_EXTENSION].GetString();
    }
    const std::string container = ContainerOf(file.demuxer, context.metadata, extension);
    if (container.empty())
    {
        file.notes.push_back("the vocabulary has no container for " + file.demuxer);
    }
    else
    {
        record.SetChildT(IFormatFile::TAG_CONTAINER, container);
    }
    file.descriptor->SetProperty(record);
    file.duration = Microseconds(context.duration, AVRational{1, AV_TIME_BASE});
    file.durationIsEstimated = context.duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
}

/// The file's own timecode, else the first one of its streams.
std::string TimecodeOf(const AVFormatContext& context, const std::vector<MediaStream>& streams)
{
    const std::string own = TagOf(context.metadata, "timecode");
    const auto found = std::find_if(streams.begin(), streams.end(),
                                    [](const MediaStream& stream) { return !stream.timecode.empty(); });
    return !own.empty() || found == streams.end() ? own : found->timecode;
}

/// Reads packets, so it comes last.
void AddMeasuredRates(AVFormatContext& context, MediaFile& file)
{
    const std::vector<std::optional<AVRational>> rates = MeasureFrameRates(context);
    for (MediaStream& stream : file.streams)
    {
        if (const std::optional<AVRational>& rate = rates[stream.index])
        {
            dynamic_cast<Conf::IFormatCodecVideo&>(*stream.descriptor)
                .SetFrameRate(static_cast<unsigned int>(rate->num), static_cast<unsigned int>(rate->den));
        }
    }
}

MediaFile Describe(const std::string& name, StreamReader* stream)
{
    const MediaInput input(name, stream);
    MediaFile file;
    file.name = name;
    file.demuxer = input->iformat->name;
    file.descriptor = IFormatFile::Create();
    DescribeFile(*input, stream == nullptr, file);
    for (unsigned int i = 0; i < input->nb_streams; ++i)
    {
        file.streams.push_back(DescribeStream(*input, *input->streams[i]));
    }
    if (file.streams.empty())
    {
        RefuseInput(name, "there is no stream in it");
    }
    // The first frames, so it comes before packets are counted.
    LookAtFrames(*input, file.streams);
    if (stream != nullptr)
    {
        stream->Rethrow();
    }
    AddMeasuredRates(*input, file);
    file.chapters = ChaptersOf(*input);
    file.timecode = TimecodeOf(*input, file.streams);
    return file;
}

} // namespace

std::string FFmpegFileName(const std::string& path) { return "file:" + path; }

MediaFile ProbeMedia(const ioPath& path)
{
    const std::string name = path.utf8string();
    CheckReadable(name);
    return Describe(name, nullptr);
}

MediaFile ProbeMedia(Core::IDataInput& input, const std::string& name)
{
    StreamReader reader(input);
    return Describe(name, &reader);
}

} // namespace Zelnor::Media
