#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Values.h"

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/MediaTypeUtils.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"
#include "Media/Probe/FFmpegInfo.h"

#include <pybind11/stl.h>

#include <variant>

namespace Zelnor::Python
{

namespace
{

using Int = Integer<int>;
using NameOrNumber = std::variant<Text, Int>;

void BindList(py::module_& module, const char* name, const std::vector<std::string>& (*list)(),
              const char* documentation)
{
    module.def(
        name, [list] { return ToPython(list()); }, documentation);
}

void BindTest(py::module_& module, const char* name, bool (*test)(const std::string&), const char* argument,
              const char* documentation)
{
    module.def(
        name, [test](const Text& text) { return test(text.bytes); }, py::arg(argument), documentation);
}

void BindLists(py::module_& module)
{
    using namespace Conf;
    BindList(module, "containers", &GetContainerList, "Return all containers of the vocabulary.");
    BindList(module, "writable_containers", &GetFormatList,
             "Return the containers that can be written. \"adts\" occurs twice.");
    BindList(module, "disabled_parsers", &GetDisabledFormatParserList,
             "Return the containers whose built-in parser must not be used.");
    BindList(module, "disabled_muxers", &GetDisabledFormatMuxerList,
             "Return the containers whose built-in muxer must not be used.");
    BindList(module, "disabled_decoders", &GetDisabledDecoderList,
             "Return the codecs that must not be decoded.");
    BindList(module, "disabled_encoders", &GetDisabledEncoderList,
             "Return the codecs that must not be encoded.");
    BindList(module, "external_decoders", &GetExternalDecoderList,
             "Return the codecs that FFmpeg does not decode.");
    BindList(module, "external_encoders", &GetExternalEncoderList,
             "Return the codecs that FFmpeg does not encode.");
    BindList(module, "muxer_implementations", &GetMuxerImplList, "Return the MUXER_ names.");
    BindList(module, "parser_implementations", &GetParserImplList, "Return the PARSER_ names.");
    BindList(module, "decoder_implementations", &GetDecoderImplList, "Return the DECODER_ names.");
    BindList(module, "encoder_implementations", &GetEncoderImplList, "Return the ENCODER_ names.");
    BindList(module, "image_containers", &GetImageContainerList, "Return the containers of images.");
    BindList(module, "audio_containers", &GetAudioContainerList, "Return the containers of audio.");
    BindTest(module, "is_container", &IsContainer, "container", "Whether the vocabulary has the container.");
    BindTest(module, "is_external_decoder", &IsExternalDecoder, "codec_id",
             "Whether FFmpeg does not decode the codec.");
    BindTest(module, "is_external_encoder", &IsExternalEncoder, "codec_id",
             "Whether FFmpeg does not encode the codec.");
    BindTest(module, "is_image_container", &IsImageContainer, "container",
             "Whether the container holds images.");
    BindTest(module, "is_audio_container", &IsAudioContainer, "container",
             "Whether the container holds audio.");
    BindTest(module, "can_read_with_encryption", &CanReadWithEncryption, "encryption",
             "Whether a file with this encryption (\"\" for none) can be read.");
    BindTest(module, "can_copy_with_encryption", &CanCopyWithEncryption, "encryption",
             "Whether streams may be copied from a file with this encryption.");
}

/// Not the library's call: FFmpeg's enumeration cannot hold every number.
const std::string& CodecOfNumber(int number)
{
    for (const auto& [id, text] : Conf::mapCodecs)
    {
        if (static_cast<int>(id) == number)
        {
            return text;
        }
    }
    ZELNOR_THROW("Bindings/Python/Source/LookUps",
                 Conf::FormatException() << TagDescription("Provided codec id (#" + std::to_string(number) +
                                                           ") is not found in list"));
}

void BindCodecs(py::module_& module)
{
    module.def(
        "codec_media_type",
        [](const Text& codecId) -> py::object {
            const std::optional<MediaType> type = Conf::GetCodecMediaType(codecId.bytes);
            return type ? MakeValue("MediaType", static_cast<int>(*type)) : py::object(py::none());
        },
        py::arg("codec_id"),
        "Return the kind of codec that a CODEC_ID_ text names; None for what belongs to no kind.");
    module.def(
        "is_audio_bitrate_required",
        [](const Text& codecId) { return Conf::IsAudioBitrateRequired(codecId.bytes); }, py::arg("codec_id"),
        "Whether an encoder for the audio codec needs a bitrate. Raise FormatException if it is not one.");
    module.def(
        "codec_number",
        [](const Text& codecId) { return static_cast<int>(Conf::CodecIDFromTextID(codecId.bytes)); },
        py::arg("codec_id"), "Return FFmpeg's ID of a codec. Raise FormatException if there is none.");
    module.def(
        "codec_id", [](Int number) { return ToPython(CodecOfNumber(number.value)); }, py::arg("number"),
        "Return our text for FFmpeg's ID of a codec. Raise FormatException if none.");
}

py::object Describe(const PixFmtDescription& format)
{
    return MakeValue("PixelFormatDescription", static_cast<int>(format.pixFmt), ToPython(format.name),
                     static_cast<int>(format.components), static_cast<int>(format.log2ChromaW),
                     static_cast<int>(format.log2ChromaH), format.flags, static_cast<int>(format.colorRange));
}

py::object Describe(const Conf::SampleFmtRecord& format)
{
    return MakeValue("SampleFormat", static_cast<int>(format.format), format.bitsPerSample,
                     ToPython(format.textId), format.planar, static_cast<int>(format.counterpart));
}

py::object Describe(const Conf::LayoutRecord& layout)
{
    return MakeValue("Layout", static_cast<int>(layout.layout), layout.channels, ToPython(*layout.textId));
}

/// Finds a record of `T` by its text or its number of the type `E`.
template <class T, class E>
py::object Find(const NameOrNumber& key)
{
    if (const auto* const text = std::get_if<Text>(&key))
    {
        return Describe(*T::Find(text->bytes));
    }
    return Describe(*T::Find(static_cast<E>(std::get<Int>(key).value)));
}

/// Not the library's call for any number: what is not a pixel format has no enumerator.
const PixFmtDescription& PixelFormat(Int format)
{
    return *PixFmtDescription::Find(static_cast<PixFmt>(format.value));
}

void BindRecordsOfFormats(py::module_& module)
{
    module.def("pixel_format", &Find<PixFmtDescription, PixFmt>, py::arg("format"),
               "Describe a pixel format, a name as \"YUV420P\" or a PixFmt. Raise ValueError if unknown.");
    module.def(
        "plane_width",
        [](Int format, Int width, Int plane) {
            return PixelFormat(format).GetPlanWidth(width.value, plane.value);
        },
        py::arg("format"), py::arg("width"), py::arg("plane"),
        "Return the width of a plane of a frame. Raise ValueError for a plane that there is not.");
    module.def(
        "plane_height",
        [](Int format, Int height, Int plane) {
            return PixelFormat(format).GetPlanHeight(height.value, plane.value);
        },
        py::arg("format"), py::arg("height"), py::arg("plane"),
        "Return the height of a plane of a frame. Raise ValueError for a plane that there is not.");
    module.def(
        "make_color",
        [](Int format, Integer<Color> rgba) { return PixelFormat(format).MakeColor(rgba.value); },
        py::arg("format"), py::arg("rgba"),
        "Return a pixel of the format with the colour, whose lowest byte is red and highest alpha.");
    module.def("sample_format", &Find<Conf::SampleFmtRecord, Conf::SampleFormats>, py::arg("format"),
               "Describe a sample format, a text or a number. Raise FormatException if unknown.");
    module.def("channel_layout", &Find<Conf::LayoutRecord, Conf::ChannelLayout>, py::arg("layout"),
               "Describe a channel layout, a text or a number. Raise FormatException if unknown.");
    module.def(
        "channel_layout_of", [](Int channels) { return Describe(*Conf::LayoutRecord::Find(channels.value)); },
        py::arg("channels"),
        "Describe the first channel layout of so many channels. Raise FormatException if there is none.");
}

void BindFileTypes(py::module_& module)
{
    module.def(
        "file_groups",
        [] {
            py::list groups;
            for (const auto& [type, group] : Conf::GetSupportedFormats())
            {
                groups.append(
                    py::make_tuple(MakeValue("GroupMediaType", static_cast<int>(type)), ToPython(group)));
            }
            return groups;
        },
        "Return the groups of a file dialog in order, each with its media type.");
    module.def(
        "group_extensions",
        [](const Text& group) { return ToPython(Conf::GetSupportedFormatExtensions(group.bytes)); },
        py::arg("group"), "Return the extensions of a group. Raise ValueError if there is no such group.");
    module.def(
        "group_tip", [](const Text& group) { return ToPython(Conf::GetFormatExtentionTip(group.bytes)); },
        py::arg("group"), "Return the short hint of a group, empty for groups without one.");
    module.def(
        "default_extension",
        [](const Text& container) {
            return ToPython(Conf::GetDefaultFileExtensionForContainer(container.bytes));
        },
        py::arg("container"),
        "Return the extension of a file in the container. Raise ValueError if there is none.");
}

using Accelerator = Integer<int>;

Conf::IFormatCodecVideo::AcceleratorType TypeOf(Accelerator accelerator)
{
    return static_cast<Conf::IFormatCodecVideo::AcceleratorType>(accelerator.value);
}

void BindAcceleratorList(py::module_& module, const char* name,
                         void (*fill)(Conf::IFormatCodecVideo::AcceleratorType, std::vector<std::string>&),
                         const char* documentation)
{
    module.def(
        name,
        [fill](Accelerator accelerator) {
            std::vector<std::string> names;
            fill(TypeOf(accelerator), names);
            return ToPython(names);
        },
        py::arg("accelerator"), documentation);
}

void BindAccelerators(py::module_& module)
{
    using Video = Conf::IFormatCodecVideo;
    module.def(
        "accelerated_encoder",
        [](Accelerator accelerator, const Text& codecId) {
            return ToPython(Video::GetAcceleratedEncoder(TypeOf(accelerator), codecId.bytes));
        },
        py::arg("accelerator"), py::arg("codec_id"),
        "Return an accelerator's encoder for a codec. Raise LookupError if there is none.");
    module.def(
        "accelerated_decoder",
        [](Accelerator accelerator, const Text& codecId) {
            return ToPython(Video::GetAcceleratedDecoder(TypeOf(accelerator), codecId.bytes));
        },
        py::arg("accelerator"), py::arg("codec_id"),
        "Return an accelerator's decoder for a codec. Raise LookupError if there is none.");
    BindAcceleratorList(module, "accelerated_encoders", &Video::GetAcceleratedEncoders,
                        "Return all encoders of an accelerator.");
    BindAcceleratorList(module, "accelerated_decoders", &Video::GetAcceleratedDecoders,
                        "Return all decoders of an accelerator.");
    BindAcceleratorList(module, "accelerated_encoder_codecs", &Video::GetAcceleratedEncoderCodecs,
                        "Return the codecs that an accelerator encodes.");
    BindAcceleratorList(module, "accelerated_decoder_codecs", &Video::GetAcceleratedDecoderCodecs,
                        "Return the codecs that an accelerator decodes.");
}

void BindDescriptions(py::module_& module)
{
    module.def(
        "muxer_description", [](const Text& name) { return ToPython(Media::MuxerDescription(name.bytes)); },
        py::arg("name"), "Return what FFmpeg says of its muxer of that name; empty if it has none.");
    module.def(
        "demuxer_description",
        [](const Text& name) { return ToPython(Media::DemuxerDescription(name.bytes)); }, py::arg("name"),
        "Return what FFmpeg says of its demuxer of that name; empty if it has none.");
}

} // namespace

void BindLookUps(py::module_& module)
{
    BindLists(module);
    BindCodecs(module);
    BindRecordsOfFormats(module);
    BindFileTypes(module);
    BindAccelerators(module);
    BindDescriptions(module);
}

} // namespace Zelnor::Python
