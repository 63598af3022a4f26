#include "Tools/zconf/Commands/MediaText.h"

#include "Tools/zconf/Console/Table.h"
#include "Tools/zconf/Console/Text.h"
#include "Tools/zconf/Console/TimeText.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"

#include <algorithm>

namespace Zelnor::Tool
{

namespace
{

using Conf::IFormat;
using Conf::IFormatCodec;
using Conf::IFormatCodecAudio;
using Conf::IFormatCodecVideo;
using Conf::IFormatFile;
using Core::Property;

/// The text or number under a key, with a unit; empty when there is none.
std::string ValueText(const Property& record, const std::string& key, const char* unit = "")
{
    const auto child = record.FindChild(key);
    if (child == record.end())
    {
        return "";
    }
    switch (child->GetType())
    {
    case PROPERTY_TYPE_INT64:
        return std::to_string(child->GetInt64()) + unit;
    case PROPERTY_TYPE_STRING:
        return child->GetString() + unit;
    case PROPERTY_TYPE_RATIO:
        return std::to_string(child->GetRatio().numerator()) +
               (child->GetRatio().denominator() == 1
                    ? ""
                    : "/" + std::to_string(child->GetRatio().denominator())) +
               unit;
    case PROPERTY_TYPE_NONE:
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return "";
}

std::string SizeText(const IFormatCodecVideo& video)
{
    if (!video.GetProperty().ChildExists(IFormatCodecVideo::TAG_WIDTH))
    {
        return "";
    }
    const Conf::FrameInfo frame = video.GetFrameInfo();
    return std::to_string(frame.width) + "x" + std::to_string(frame.height) + " (" +
           std::to_string(video.GetFrameAspectX()) + ":" + std::to_string(video.GetFrameAspectY()) + ")";
}

std::string PixelFormatText(const IFormatCodecVideo& video, const Media::MediaStream& stream)
{
    const PixFmt format = video.GetPixelFormat();
    return format == PIX_FMT_NONE ? stream.pixelFormat : PixFmtDescription::Find(format)->name;
}

/// "bt2020nc/bt2020/smpte2084 tv": matrix, primaries, transfer and range; "?" stands for one of the three.
/// The usual range alone is nothing to tell.
std::string ColorText(const Media::VideoColor& color)
{
    const auto known = [](const std::string& name) { return name.empty() ? "?" : name; };
    const bool isOne = color.matrix == color.primaries && color.matrix == color.transfer;
    const std::string names =
        isOne ? color.matrix
              : known(color.matrix) + "/" + known(color.primaries) + "/" + known(color.transfer);
    return names.empty() ? (color.range == "tv" ? "" : color.range)
                         : names + (color.range.empty() ? "" : " ") + color.range;
}

std::string HdrText(const Media::VideoHdr& hdr)
{
    std::string text;
    const auto add = [&text](const std::string& name, const std::string& value) {
        text += value.empty() ? "" : (text.empty() ? "" : ", ") + name + value;
    };
    add("Dolby Vision ", hdr.dolbyVision);
    add("mastering display ", hdr.masteringDisplay);
    add("content light ", hdr.contentLight);
    return text;
}

std::string FlagsText(const Media::MediaStream& stream)
{
    std::string text;
    const auto add = [&text](bool flag, const std::string& name) {
        text += !flag ? "" : (text.empty() ? "" : ", ") + name;
    };
    add(stream.isDefault, "default");
    add(stream.isForced, "forced");
    add(stream.isInterlaced, "interlaced" + (stream.fieldOrder.empty() ? "" : " " + stream.fieldOrder));
    add(stream.isAttachedPicture, "attached picture");
    add(stream.rotation != 0, "rotated " + std::to_string(stream.rotation) + " degrees");
    return text;
}

std::vector<std::string> PartsOf(const Media::MediaStream& stream)
{
    const Property& record = stream.descriptor->GetProperty();
    std::vector<std::string> parts = {ValueText(record, IFormatCodec::TAG_CODEC_ID)};
    if (parts.front().empty())
    {
        parts.front() = stream.codec;
    }
    if (const auto* const video = dynamic_cast<const IFormatCodecVideo*>(stream.descriptor.get()))
    {
        parts.push_back(SizeText(*video));
        parts.push_back(ValueText(record, IFormatCodecVideo::TAG_FPS, " fps"));
        parts.push_back(PixelFormatText(*video, stream));
        parts.push_back(ColorText(stream.color));
        parts.push_back(HdrText(stream.hdr));
    }
    else if (dynamic_cast<const IFormatCodecAudio*>(stream.descriptor.get()) != nullptr)
    {
        parts.push_back(ValueText(record, IFormatCodecAudio::TAG_SAMPLE_RATE, " Hz"));
        parts.push_back(ValueText(record, IFormatCodecAudio::TAG_LAYOUT));
        parts.push_back(ValueText(record, IFormatCodecAudio::TAG_SAMPLE_FORMAT));
    }
    parts.push_back(ValueText(record, IFormatCodec::TAG_BITRATE, " bit/s"));
    parts.push_back(ValueText(record, IFormatCodec::TAG_PROFILE));
    parts.push_back(ValueText(record[IFormat::TAG_METADATA], IFormatCodec::TAG_LANGUAGE));
    parts.push_back(stream.timecode.empty() ? "" : "timecode " + stream.timecode);
    parts.push_back(stream.fileName);
    parts.push_back(stream.mimeType);
    parts.push_back(FlagsText(stream));
    parts.erase(std::remove(parts.begin(), parts.end(), std::string()), parts.end());
    return parts;
}

std::string ChapterText(const Media::MediaChapter& chapter)
{
    return DurationText(chapter.start) + " to " + DurationText(chapter.end) +
           (chapter.title.empty() ? "" : "  " + chapter.title);
}

std::string FileTable(const Media::MediaFile& file, const Painter& paint)
{
    const Property& record = file.descriptor->GetProperty();
    Table table(2);
    const auto add = [&table](const std::string& key, const std::string& value) {
        if (!value.empty())
        {
            table.AddRow({{key, Style::Key}, {value}});
        }
    };
    const std::string container = ValueText(record, IFormatFile::TAG_CONTAINER);
    add("container", container.empty() ? file.demuxer : container);
    add("duration", file.duration ? DurationText(*file.duration) +
                                        (file.durationIsEstimated ? " (estimated from the bitrate)" : "")
                                  : "unknown");
    add("size", ValueText(record, IFormatFile::TAG_FORMAT_FILE_SIZE, " bytes"));
    add("modified", ValueText(record, IFormatFile::TAG_FILE_MODIFY_TIME));
    add("timecode", file.timecode);
    for (const Property& tag : record[IFormat::TAG_METADATA])
    {
        add(tag.GetName(), tag.GetType() == PROPERTY_TYPE_STRING ? tag.GetString() : "");
    }
    for (const Media::MediaChapter& chapter : file.chapters)
    {
        add("chapter", ChapterText(chapter));
    }
    for (const std::string& note : file.notes)
    {
        add("note", note);
    }
    return table.Text(paint);
}

} // namespace

std::string DurationText(std::int64_t microseconds)
{
    const std::int64_t milliseconds = (microseconds + kSecond / 2000) / (kSecond / 1000);
    const auto padded = [](std::int64_t number, std::size_t width) {
        const std::string digits = std::to_string(number);
        return std::string(width > digits.size() ? width - digits.size() : 0, '0') + digits;
    };
    return std::to_string(milliseconds / 3600000) + ":" + padded(milliseconds / 60000 % 60, 2) + ":" +
           padded(milliseconds / 1000 % 60, 2) + "." + padded(milliseconds % 1000, 3);
}

std::string StreamText(const Media::MediaStream& stream)
{
    std::string text;
    for (const std::string& part : PartsOf(stream))
    {
        text += (text.empty() ? "" : "  ") + part;
    }
    return text;
}

std::string MediaText(const Media::MediaFile& file, const Painter& paint)
{
    std::string text = paint(Style::Heading, Printable(file.name)) + "\n" + FileTable(file, paint);
    Table table;
    for (const Media::MediaStream& stream : file.streams)
    {
        table.AddRow({{"stream " + std::to_string(stream.index), Style::Id},
                      {Media::NameOf(stream.kind), Style::Key},
                      {StreamText(stream)}});
        for (const std::string& note : stream.notes)
        {
            table.AddRow({{""}, {"note", Style::Bad}, {note}});
        }
    }
    return text + table.Text(paint);
}

} // namespace Zelnor::Tool
