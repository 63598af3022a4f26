#pragma once

#include "Conf/Interfaces/IFormatCodec.h"

namespace Zelnor::Conf
{

/// The descriptor of a subtitle stream's codec. Its record is named "format_codec_subtitle".
class ZELNOR_API IFormatCodecSubtitle : public IFormatCodec
{
public:
    // TAG_CHARSET_ENCODING, NATIVE_CHARSET_ENCODING, CODEC_ID_SRT, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#define ZELNOR_CODEC(name) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
    /// Copies as `IFormatCodec` does.
    IFormatCodecSubtitle(const IFormatCodecSubtitle& other);
    ~IFormatCodecSubtitle() override;
    /// A new descriptor; `Clone` makes a copy.
    static boost::intrusive_ptr<IFormatCodecSubtitle> Create();
    boost::intrusive_ptr<IFormatCodecSubtitle> Clone() const;

    /// 3
    int GetCodecType() const override;
    boost::intrusive_ptr<IFormatCodec> CloneBase() const override;

protected:
    IFormatCodecSubtitle();
};

} // namespace Zelnor::Conf
