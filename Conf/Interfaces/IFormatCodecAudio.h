#pragma once

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/ServiceRecords.h"

namespace Zelnor::Conf
{

/// The descriptor of an audio stream's codec: typed access to the sample format, rate, channel layout and
/// language in its record, which is named "format_codec_audio". Formats and layouts are stored as text ids.
///
/// All getters except those of the language throw `Core::PropertyException` when the record lacks the value.
class ZELNOR_API IFormatCodecAudio : public IFormatCodec
{
public:
    // TAG_SAMPLE_RATE, TAG_AAC_PROFILE_LOW, TAG_CH_LAYOUT_STEREO, CODEC_ID_MP3, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#define ZELNOR_SELF(name) static const std::string name;
#define ZELNOR_CODEC(name) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    /// Copies as `IFormatCodec` does.
    IFormatCodecAudio(const IFormatCodecAudio& other);
    ~IFormatCodecAudio() override;
    /// A new descriptor; `Clone` makes a copy.
    static boost::intrusive_ptr<IFormatCodecAudio> Create();
    boost::intrusive_ptr<IFormatCodecAudio> Clone() const;

    int AddRef() const override;
    int GetRefCount() const override;
    int Release() const override;

    /// 1
    int GetCodecType() const override;
    boost::intrusive_ptr<IFormatCodec> CloneBase() const override;

    /// The language in the record's metadata; empty if there is none.
    virtual std::string GetLanguage() const;
    /// Sets the language in the record's metadata. Any text is accepted.
    virtual void SetLanguage(const std::string& language);
    bool ExistsLanguage() const;

    /// \throw FormatException when the stored text does not name a sample format
    SampleFormats GetSampleFormat() const;
    /// \throw FormatException when `format` has no record; this record stays as it was
    void SetSampleFormat(SampleFormats format);
    /// \throw FormatException when the stored text does not name a channel layout
    ChannelLayout GetChannelLayout() const;
    /// \throw FormatException when `layout` has no record; this record stays as it was
    void SetChannelLayout(ChannelLayout layout);
    /// \throw FormatException as the two getters above
    SampleInfo GetSampleInfo() const;
    /// Sets sample format, channel layout and rate, or none of them if that fails.
    void SetSampleInfo(const SampleInfo& info);

protected:
    IFormatCodecAudio();

private:
    RefCountImpl m_audioReferences;
};

} // namespace Zelnor::Conf
