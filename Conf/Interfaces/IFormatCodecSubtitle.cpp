#include "Conf/Interfaces/IFormatCodecSubtitle.h"

namespace Zelnor::Conf
{

IFormatCodecSubtitle::IFormatCodecSubtitle() : IFormatCodec(TAG_FORMAT_CODEC_SUBTITLE) {}

IFormatCodecSubtitle::IFormatCodecSubtitle(const IFormatCodecSubtitle& other) = default;

IFormatCodecSubtitle::~IFormatCodecSubtitle() = default;

boost::intrusive_ptr<IFormatCodecSubtitle> IFormatCodecSubtitle::Create()
{
    return new IFormatCodecSubtitle();
}

boost::intrusive_ptr<IFormatCodecSubtitle> IFormatCodecSubtitle::Clone() const
{
    return new IFormatCodecSubtitle(*this);
}

int IFormatCodecSubtitle::GetCodecType() const { return 3; }

boost::intrusive_ptr<IFormatCodec> IFormatCodecSubtitle::CloneBase() const { return Clone(); }

} // namespace Zelnor::Conf
