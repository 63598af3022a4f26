#pragma once

#include "Conf/Interfaces/IFormat.h"
#include "Core/Interfaces/IBlob.h"
#include "Core/Interfaces/RefCountImpl.h"

namespace Zelnor::Conf
{

/// The descriptor of an elementary stream's codec, and the vocabulary that all kinds of codec share. The
/// class itself describes a stream of unknown kind; the derived classes describe video, audio and subtitles.
///
/// A new record holds, in this order: "metadata", "codec.options.encode" and "codec.options.analyze" (empty
/// groups; the dots are part of the names) and "name" = "Unknown codec". The private data (a codec's extra
/// data) is not part of the record: it is not compared, printed or saved.
class ZELNOR_API IFormatCodec : public IFormat
{
public:
    // TAG_BITRATE, TAG_BITRATE_MODE_VBR, ENCODER_FFMPEG_IMPL, CODEC_ID_NONE, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#define ZELNOR_SELF(name) static const std::string name;
#define ZELNOR_CODEC(name) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"

    /// The largest value of `TAG_QUALITY`, the lowest quality. 1 is the best.
    static constexpr int MAX_QUALITY = 32;

    /// Copies the record and the internal properties and shares the private data. The copy counts its own
    /// references.
    IFormatCodec(const IFormatCodec& other);
    ~IFormatCodec() override;

    /// Makes a descriptor with an empty object name.
    static boost::intrusive_ptr<IFormatCodec> Create();

    int AddRef() const override;
    int GetRefCount() const override;
    int Release() const override;

    /// The kind of stream in FFmpeg's numbers: -1 unknown, 0 video, 1 audio, 3 subtitle. Not
    /// `Zelnor::MediaType`.
    virtual int GetCodecType() const;

    /// Options for the encoder: the child "codec.options.encode", which gets the value and the children of
    /// `options` and is created if it is missing.
    virtual void SetOptionsEncode(const Core::Property& options);
    virtual const Core::Property& GetOptionsEncode() const;
    /// Options for probing and decoding: the child "codec.options.analyze".
    virtual void SetOptionsAnalyze(const Core::Property& options);
    virtual const Core::Property& GetOptionsAnalyze() const;

    /// Replaces the private data by `blob`, of which a reference is kept. Null removes it.
    virtual void SetPrivateData(boost::intrusive_ptr<IBlob> blob);
    virtual boost::intrusive_ptr<IBlob> GetPrivateData() const;

    /// Makes a copy of the same class as this object.
    virtual boost::intrusive_ptr<IFormatCodec> CloneBase() const;

protected:
    explicit IFormatCodec(const std::string& objectName); ///< makes a new record of that name

private:
    RefCountImpl m_references;
    boost::intrusive_ptr<IBlob> m_privateData;
};

} // namespace Zelnor::Conf
