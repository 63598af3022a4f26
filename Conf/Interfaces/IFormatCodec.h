#pragma once

#include "Conf/Interfaces/IFormat.h"
#include "Core/Interfaces/IBlob.h"
#include "Core/Interfaces/RefCountImpl.h"

namespace Zelnor::Conf
{

/// The descriptor of one elementary stream's codec, and the vocabulary that all kinds of codec share. By
/// itself it describes a stream of unknown kind.
///
/// A new record holds, in this order: "metadata", "codec.options.encode" and "codec.options.analyze" (empty
/// groups whose names hold dots but are no paths) and "name" = "Unknown codec". The private data (a codec's
/// extra data) is no part of the record: it is neither compared nor printed nor saved.
class ZELNOR_API IFormatCodec : public IFormat
{
public:
    // TAG_BITRATE, TAG_BITRATE_MODE_VBR, ENCODER_FFMPEG_IMPL, CODEC_ID_NONE, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#define ZELNOR_SELF(name) static const std::string name;
#define ZELNOR_CODEC(name) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormatCodec.def"

    /// The upper end of the `TAG_QUALITY` scale, which begins at 1 (best).
    static constexpr int MAX_QUALITY = 32;

    /// Copies the record and the internal properties; the private data is shared, the references are counted
    /// anew.
    IFormatCodec(const IFormatCodec& other);
    ~IFormatCodec() override;

    /// A descriptor with an empty object name.
    static boost::intrusive_ptr<IFormatCodec> Create();

    int AddRef() const override;
    int GetRefCount() const override;
    int Release() const override;

    /// The kind of stream in FFmpeg's numbers: -1 unknown, 0 video, 1 audio, 3 subtitle. Not
    /// `Zelnor::MediaType`.
    virtual int GetCodecType() const;

    /// Options for the encoder. Setting copies value and children of `options`; the child keeps its name and
    /// is created if it is missing.
    virtual void SetOptionsEncode(const Core::Property& options);
    virtual const Core::Property& GetOptionsEncode() const;
    /// Options for probing and decoding.
    virtual void SetOptionsAnalyze(const Core::Property& options);
    virtual const Core::Property& GetOptionsAnalyze() const;

    /// Keeps a reference to `blob` instead of the one held so far; null clears it.
    virtual void SetPrivateData(boost::intrusive_ptr<IBlob> blob);
    virtual boost::intrusive_ptr<IBlob> GetPrivateData() const;

    /// A copy of the same class as this object.
    virtual boost::intrusive_ptr<IFormatCodec> CloneBase() const;

protected:
    explicit IFormatCodec(const std::string& objectName);

private:
    RefCountImpl m_references;
    boost::intrusive_ptr<IBlob> m_privateData;
};

} // namespace Zelnor::Conf
