#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Records.h"
#include "Bindings/Python/Source/Values.h"

#include "Media/Probe/FFmpegLog.h"
#include "Media/Probe/MediaProbe.h"

#include <pybind11/stl.h>

namespace Zelnor::Python
{

namespace
{

using Media::VideoColor;
using Media::VideoHdr;

MediaFile Probe(const Path& path)
{
    const WithoutLock withoutLock;
    return {std::make_shared<const Media::MediaFile>(Media::ProbeMedia(path.bytes))};
}

py::object DescribeColor(const VideoColor& color)
{
    return MakeValue("VideoColor", ToPython(color.range), ToPython(color.matrix), ToPython(color.primaries),
                     ToPython(color.transfer));
}

py::object DescribeHdr(const VideoHdr& hdr)
{
    return MakeValue("VideoHdr", ToPython(hdr.masteringDisplay), ToPython(hdr.contentLight),
                     ToPython(hdr.dolbyVision), hdr.isOnlyInFrames);
}

py::tuple Chapters(const MediaFile& file)
{
    py::list chapters;
    for (const Media::MediaChapter& chapter : file.file->chapters)
    {
        chapters.append(MakeValue("MediaChapter", chapter.start, chapter.end, ToPython(chapter.title)));
    }
    return py::tuple(chapters);
}

py::tuple Streams(const MediaFile& file)
{
    py::list streams;
    for (std::size_t i = 0; i < file.file->streams.size(); ++i)
    {
        streams.append(MediaStream{file.file, i});
    }
    return py::tuple(streams);
}

py::object RecordOf(const boost::intrusive_ptr<Conf::IFormatCodec>& descriptor)
{
    return descriptor ? ToRecord(descriptor->GetProperty()) : py::object(py::none());
}

/// Gives Python the member of each stream, as it is: texts, optional numbers, flags.
template <class T>
void BindMember(py::class_<MediaStream>& type, const char* name, T Media::MediaStream::*member,
                const char* documentation)
{
    type.def_property_readonly(
        name,
        [member](const MediaStream& self) -> py::object {
            const T& value = self.Get().*member;
            if constexpr (std::is_same_v<T, std::string> || std::is_same_v<T, std::optional<std::int64_t>>)
            {
                return ToPython(value);
            }
            else
            {
                return py::cast(value);
            }
        },
        documentation);
}

void BindStreamContents(py::class_<MediaStream>& type)
{
    type.def_property_readonly(
            "kind",
            [](const MediaStream& self) {
                return MakeValue("StreamKind", ToPython(std::string(Media::NameOf(self.Get().kind))));
            },
            "Its StreamKind.")
        .def_property_readonly(
            "record", [](const MediaStream& self) { return RecordOf(self.Get().descriptor); },
            "A copy of its codec descriptor's record.")
        .def_property_readonly(
            "picture", [](const MediaStream& self) { return py::bytes(self.Get().picture); },
            "The bytes of a cover; empty when there are too many.")
        .def_property_readonly(
            "color", [](const MediaStream& self) { return DescribeColor(self.Get().color); },
            "How the colours of a video are coded.")
        .def_property_readonly(
            "hdr", [](const MediaStream& self) { return DescribeHdr(self.Get().hdr); },
            "What a video tells displays of high dynamic range.")
        .def_property_readonly(
            "notes", [](const MediaStream& self) { return ToTuple(self.Get().notes); },
            "What the record cannot say, as sentences without an end.")
        .def("__repr__", [](const MediaStream& self) {
            return py::str("<zelnor.MediaStream {}: {}, {}>")
                .format(self.Get().index, Media::NameOf(self.Get().kind), ToPython(self.Get().codec));
        });
}

void BindStreamMembers(py::class_<MediaStream>& type)
{
    using Stream = Media::MediaStream;
    BindMember(type, "index", &Stream::index, "Its index in the file.");
    BindMember(type, "codec", &Stream::codec, "FFmpeg's name of the codec.");
    BindMember(type, "is_default", &Stream::isDefault, "Whether players choose it by default.");
    BindMember(type, "is_forced", &Stream::isForced, "Whether a subtitle is shown in any case.");
    BindMember(type, "is_attached_picture", &Stream::isAttachedPicture, "Whether it is a cover.");
    BindMember(type, "is_interlaced", &Stream::isInterlaced, "Whether a video is interlaced.");
    BindMember(type, "is_interlaced_by_header", &Stream::isInterlacedByHeader,
               "Whether the header says so, and the frames that were decoded do not.");
    BindMember(type, "is_bitmap", &Stream::isBitmap, "Whether it is a bitmap subtitle.");
    BindMember(type, "channels", &Stream::channels, "Channels of audio; 0 if not known.");
    BindMember(type, "field_order", &Stream::fieldOrder,
               "progressive, tt, bb, tb or bt; empty if not known.");
    BindMember(type, "pixel_format", &Stream::pixelFormat, "FFmpeg's name of the pixel format.");
    BindMember(type, "sample_format", &Stream::sampleFormat, "FFmpeg's name of the sample format.");
    BindMember(type, "bits_per_sample", &Stream::bitsPerSample, "Of a colour component or an audio sample.");
    BindMember(type, "profile", &Stream::profile, "FFmpeg's name of the profile; empty if not known.");
    BindMember(type, "start", &Stream::start, "The first frame's time in microseconds, if known.");
    BindMember(type, "rotation", &Stream::rotation, "Clockwise degrees by which it is rotated for display.");
    BindMember(type, "duration", &Stream::duration, "In microseconds, if known.");
    BindMember(type, "programs", &Stream::programs, "The numbers of the programmes that it belongs to.");
    BindMember(type, "timecode", &Stream::timecode, "Of its first frame; empty when it has none.");
    BindMember(type, "file_name", &Stream::fileName, "Of an attachment.");
    BindMember(type, "mime_type", &Stream::mimeType, "Of an attachment.");
}

void BindFile(py::class_<MediaFile>& type)
{
    type.def_property_readonly(
            "name", [](const MediaFile& self) { return ToPython(self.file->name); }, "As it was given.")
        .def_property_readonly(
            "demuxer", [](const MediaFile& self) { return ToPython(self.file->demuxer); },
            "FFmpeg's names of the demuxer.")
        .def_property_readonly(
            "record",
            [](const MediaFile& self) -> py::object {
                return self.file->descriptor ? ToRecord(self.file->descriptor->GetProperty()) : py::none();
            },
            "A copy of the file descriptor's record.")
        .def_property_readonly(
            "duration", [](const MediaFile& self) { return ToPython(self.file->duration); },
            "In microseconds, if known.")
        .def_property_readonly(
            "duration_is_estimated", [](const MediaFile& self) { return self.file->durationIsEstimated; },
            "Whether the duration is a guess.")
        .def_property_readonly(
            "timecode", [](const MediaFile& self) { return ToPython(self.file->timecode); },
            "Its own, else the first one of its streams; empty when it has none.")
        .def_property_readonly("chapters", &Chapters, "Its chapters, in its order.")
        .def_property_readonly(
            "notes", [](const MediaFile& self) { return ToTuple(self.file->notes); },
            "What the records cannot say, as sentences without an end.")
        .def_property_readonly("streams", &Streams, "Its streams, in its order.")
        .def("__repr__", [](const MediaFile& self) {
            return py::str("<zelnor.MediaFile {!r}: {} streams>")
                .format(ToPython(self.file->name), self.file->streams.size());
        });
}

} // namespace

void BindProbing(py::module_& module)
{
    py::class_<MediaStream> stream(module, "MediaStream", py::is_final(), "One stream of a media file.");
    BindStreamContents(stream);
    BindStreamMembers(stream);
    Seal(stream, nullptr);
    py::class_<MediaFile> file(module, "MediaFile", py::is_final(), "A media file and its streams.");
    BindFile(file);
    Seal(file, nullptr);
    module.def("probe", &Probe, py::arg("path"),
               "Look into a media file. Raise ProbeException when it cannot be read.");
    module.def(
        "keep_ffmpeg_messages", [] { Media::KeepFFmpegMessages(); },
        "Set FFmpeg's log callback, once for the process: its last message becomes part of\n"
        "ProbeException and is not printed. Call it before other threads use FFmpeg.");
}

} // namespace Zelnor::Python
