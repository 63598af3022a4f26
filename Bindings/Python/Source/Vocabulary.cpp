#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Classes.h"

#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/IPropertyConstraint.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Media/Jobs/JobKeys.h"

namespace Zelnor::Python
{

namespace
{

/// One class of constants for Python.
class Names
{
public:
    Names& Add(const char* name, const std::string& text)
    {
        m_names[name] = ToPython(text);
        return *this;
    }
    Names& Add(const char* name, std::int64_t number)
    {
        m_names[name] = py::int_(number);
        return *this;
    }
    const py::dict& Get() const { return m_names; }

private:
    py::dict m_names;
};

// clang-format off
Names FormatNames()
{
    using namespace Conf;
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, IFormat::name);
#include "Conf/Interfaces/Vocabulary/IFormat.def"
    return names.Add("TAG_OBJECT", TAG_OBJECT);
}

Names CodecNames()
{
    using Conf::IFormatCodec;
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, IFormatCodec::name);
#define ZELNOR_SELF(name) names.Add(#name, IFormatCodec::name);
#define ZELNOR_CODEC(name) names.Add(#name, IFormatCodec::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"
    return names.Add("MAX_QUALITY", IFormatCodec::MAX_QUALITY);
}

Names AudioNames()
{
    using Conf::IFormatCodecAudio;
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, IFormatCodecAudio::name);
#define ZELNOR_SELF(name) names.Add(#name, IFormatCodecAudio::name);
#define ZELNOR_CODEC(name) names.Add(#name, IFormatCodecAudio::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    return names;
}

Names SubtitleNames()
{
    using Conf::IFormatCodecSubtitle;
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, IFormatCodecSubtitle::name);
#define ZELNOR_CODEC(name) names.Add(#name, IFormatCodecSubtitle::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
    return names;
}

Names VideoNames()
{
    using Conf::IFormatCodecVideo;
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, IFormatCodecVideo::name);
#define ZELNOR_SELF(name) names.Add(#name, IFormatCodecVideo::name);
#define ZELNOR_CODEC(name) names.Add(#name, IFormatCodecVideo::name);
#define ZELNOR_CODEC_AS(name, enumerator) names.Add(#name, IFormatCodecVideo::name);
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
    return names.Add("TAG_PIX_FMT", Conf::TAG_PIX_FMT)
        .Add("MAX_VIDEO_BITRATE", IFormatCodecVideo::MAX_VIDEO_BITRATE);
}

Names FileNames()
{
    using Conf::IFormatFile;
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, IFormatFile::name);
#define ZELNOR_SELF(name) names.Add(#name, IFormatFile::name);
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"
    return names.Add("DISK_SIZE_DVD_MINI", IFormatFile::DISK_SIZE_DVD_MINI)
        .Add("DISK_SIZE_DVD_STANDARD", IFormatFile::DISK_SIZE_DVD_STANDARD)
        .Add("DISK_SIZE_DVD_DOUBLE_LAYER", IFormatFile::DISK_SIZE_DVD_DOUBLE_LAYER);
}

Names PresetNames()
{
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, Conf::IPreset::name);
#include "Conf/Interfaces/Vocabulary/IPreset.def"
    return names;
}

Names ConstraintNames()
{
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, Conf::IPropertyConstraint::name);
#include "Conf/Interfaces/Vocabulary/IPropertyConstraint.def"
    return names;
}

Names GraphNames()
{
    Names names;
#define ZELNOR_TEXT(name, text) names.Add(#name, Conf::ITranscodingMetaGraph::name);
#include "Conf/Interfaces/Vocabulary/ITranscodingMetaGraph.def"
    return names;
}

Names PixelFormatNames()
{
    Names names;
#define ZELNOR_PIXEL_FORMAT(enumerator, value, name, components, log2ChromaW, log2ChromaH, flags, colorRange) \
    names.Add(#enumerator, enumerator);
#include "Conf/Interfaces/Vocabulary/PixelFormats.def"
    return names;
}

Names SampleFormatNames()
{
    Names names;
#define ZELNOR_SAMPLE_FORMAT(name, value, bitsPerSample, planar, counterpart) names.Add(#name, Conf::name);
#include "Conf/Interfaces/Vocabulary/SampleFormats.def"
    return names;
}

Names LayoutNames()
{
    Names names;
#define ZELNOR_LAYOUT(name, enumerator, text, channels) names.Add(#enumerator, Conf::enumerator);
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    return names;
}
// clang-format on

Names JobKeyNames()
{
    using namespace Media::JobKeys;
    Names names;
    names.Add("LEFT_OUT", kLeftOut).Add("START", kStart).Add("END", kEnd).Add("CHAPTERS", kChapters);
    names.Add("TITLE", kTitle).Add("ATTACHMENTS", kAttachments).Add("DEINTERLACE", kDeinterlace);
    names.Add("DEINTERLACE_OFF", kDeinterlaceOff).Add("DEINTERLACE_EVERY_FRAME", kDeinterlaceEveryFrame);
    names.Add("DEINTERLACE_EVERY_FIELD", kDeinterlaceEveryField);
    names.Add("DEINTERLACE_KEEP", kDeinterlaceKeep).Add("PIXEL_FORMAT", kPixelFormat);
    names.Add("COLOR_RANGE", kColorRange).Add("COLOR_MATRIX", kColorMatrix);
    return names.Add("COLOR_PRIMARIES", kColorPrimaries).Add("COLOR_TRANSFER", kColorTransfer);
}

} // namespace

void BindVocabulary(py::module_& module)
{
    py::dict classes;
    classes["IFormat"] = FormatNames().Get();
    classes["IFormatCodec"] = CodecNames().Get();
    classes["IFormatCodecAudio"] = AudioNames().Get();
    classes["IFormatCodecSubtitle"] = SubtitleNames().Get();
    classes["IFormatCodecVideo"] = VideoNames().Get();
    classes["IFormatFile"] = FileNames().Get();
    classes["IPreset"] = PresetNames().Get();
    classes["IPropertyConstraint"] = ConstraintNames().Get();
    classes["ITranscodingMetaGraph"] = GraphNames().Get();
    classes["JobKeys"] = JobKeyNames().Get();
    module.attr("_constants") = classes;
    py::dict numbers;
    numbers["PixFmt"] = PixelFormatNames().Get();
    numbers["SampleFormats"] = SampleFormatNames().Get();
    numbers["ChannelLayout"] = LayoutNames().Get();
    module.attr("_numbers") = numbers;
}

} // namespace Zelnor::Python
