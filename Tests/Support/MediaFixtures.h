#pragma once

#include "Media/Presets/PresetFile.h"
#include "Media/Probe/MediaProbe.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Core/Interfaces/DataStream.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cctype>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// \file
/// Media files and presets made by hand, for tests of what is planned from them and run on them. No file is
/// opened, and no process is started.
///
///     MediaStream video = MakeVideoStream(1920, 1080);
///     SetValue(video, IFormatCodecVideo::TAG_FPS, Property::Ratio(30000, 1001));
///     const MediaFile file = MakeMediaFile({video, MakeAudioStream()});
///     const auto preset = MakePreset("mp4", R"({"video":{"codec_id":"CODEC_ID_H264"}})");

namespace Zelnor::Testing
{

namespace details
{

/// "h264" for "CODEC_ID_H264"
inline std::string FFmpegNameOf(const std::string& codecId)
{
    std::string name = codecId.substr(std::string("CODEC_ID_").size());
    for (char& c : name)
    {
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return name;
}

} // namespace details

/// Sets a value in the record of the stream's descriptor.
template <class T>
void SetValue(const Media::MediaStream& stream, const std::string& key, const T& value)
{
    Core::Property record = stream.descriptor->GetProperty();
    record.SetChildT(key, value);
    stream.descriptor->SetProperty(record);
}

/// The same without the value.
inline void RemoveValue(const Media::MediaStream& stream, const std::string& key)
{
    Core::Property record = stream.descriptor->GetProperty();
    record.RemoveChild(key);
    stream.descriptor->SetProperty(record);
}

/// Sets a tag in the metadata of a stream's or a file's descriptor.
inline void SetTag(Conf::IFormat& descriptor, const std::string& key, const std::string& value)
{
    Core::Property metadata = descriptor.GetMetadata();
    metadata.SetChildT(key, value);
    descriptor.SetMetadata(metadata);
}

/// A stream of which nothing is known but its kind and codec. Without `codecId`, the codec has no identifier.
inline Media::MediaStream MakeStream(Media::StreamKind kind, boost::intrusive_ptr<Conf::IFormatCodec> codec,
                                     const std::string& codecId = "")
{
    Media::MediaStream stream;
    stream.kind = kind;
    stream.descriptor = std::move(codec);
    if (codecId.empty())
    {
        stream.codec = "none";
        return stream;
    }
    stream.codec = details::FFmpegNameOf(codecId);
    SetValue(stream, Conf::IFormatCodec::TAG_NAME, stream.codec);
    SetValue(stream, Conf::IFormatCodec::TAG_CODEC_ID, codecId);
    return stream;
}

/// 25 frames a second of YUV420P with square pixels.
inline Media::MediaStream MakeVideoStream(std::uint32_t width = 1280, std::uint32_t height = 720,
                                          const std::string& codecId = "CODEC_ID_H264")
{
    const auto video = Conf::IFormatCodecVideo::Create();
    Media::MediaStream stream = MakeStream(Media::StreamKind::Video, video, codecId);
    video->InitByPixelAspect(width, height, 1, 1);
    video->SetFrameRate(25, 1);
    video->SetPixelFormat(PIX_FMT_YUV420P);
    return stream;
}

/// A PNG cover.
inline Media::MediaStream MakeAttachedPicture()
{
    Media::MediaStream stream = MakeVideoStream(500, 500, "CODEC_ID_PNG");
    stream.isAttachedPicture = true;
    return stream;
}

inline Media::MediaStream MakeAudioStream(Conf::ChannelLayout layout = Conf::CH_LAYOUT_STEREO,
                                          int sampleRate = 48000, const std::string& codecId = "CODEC_ID_AAC",
                                          Conf::SampleFormats format = Conf::SAMPLE_FMT_FLTP)
{
    const auto audio = Conf::IFormatCodecAudio::Create();
    Media::MediaStream stream = MakeStream(Media::StreamKind::Audio, audio, codecId);
    Conf::SampleInfo samples;
    samples.Init(format, sampleRate, layout);
    audio->SetSampleInfo(samples);
    return stream;
}

inline Media::MediaStream MakeSubtitleStream(const std::string& codecId = "CODEC_ID_SUBRIP")
{
    return MakeStream(Media::StreamKind::Subtitle, Conf::IFormatCodecSubtitle::Create(), codecId);
}

/// A bitmap subtitle.
inline Media::MediaStream MakeBitmapSubtitle(const std::string& codecId = "CODEC_ID_DVD_SUBTITLE")
{
    Media::MediaStream stream = MakeSubtitleStream(codecId);
    stream.isBitmap = true;
    return stream;
}

/// A Matroska file of ten seconds with these streams, whose indexes it sets.
inline Media::MediaFile MakeMediaFile(std::vector<Media::MediaStream> streams,
                                      const std::string& name = "in.mkv")
{
    Media::MediaFile file;
    file.name = name;
    file.demuxer = "matroska,webm";
    file.descriptor = Conf::IFormatFile::Create();
    Core::Property record = file.descriptor->GetProperty();
    record.SetChildT(Conf::IFormatFile::TAG_CONTAINER, Conf::IFormatFile::FORMAT_MATROSKA);
    file.descriptor->SetProperty(record);
    file.duration = 10000000;
    unsigned int index = 0;
    for (Media::MediaStream& stream : streams)
    {
        stream.index = index++;
    }
    file.streams = std::move(streams);
    return file;
}

/// The preset "p"; `streams` is the JSON of its "$$STREAMS$$". It is read like a file "preset.json".
inline boost::intrusive_ptr<const Conf::IPreset> MakePreset(const std::string& container,
                                                            const std::string& streams)
{
    const auto input = Core::MemoryDataInput::Create(R"({"p":{"container":")" + container +
                                                     R"(","$$STREAMS$$":)" + streams + "}}");
    return Media::PresetFile::Read(*input, "preset.json");
}

} // namespace Zelnor::Testing
