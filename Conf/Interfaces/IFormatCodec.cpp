#include "Conf/Interfaces/IFormatCodec.h"

#include <utility>

namespace Zelnor::Conf
{

IFormatCodec::IFormatCodec(const std::string& objectName) : IFormat(objectName)
{
    m_property.SetChild(TAG_CODEC_OPTIONS_ENCODE);
    m_property.SetChild(TAG_CODEC_OPTIONS_ANALYZE);
    m_property.SetChildT(TAG_NAME, std::string("Unknown codec"));
}

IFormatCodec::IFormatCodec(const IFormatCodec& other) = default;

IFormatCodec::~IFormatCodec() = default;

boost::intrusive_ptr<IFormatCodec> IFormatCodec::Create() { return new IFormatCodec(std::string()); }

int IFormatCodec::AddRef() const { return m_references.AddRefImpl(); }

int IFormatCodec::GetRefCount() const { return m_references.GetRefCountImpl(); }

int IFormatCodec::Release() const { return m_references.ReleaseOrDestroyImpl(this); }

int IFormatCodec::GetCodecType() const { return -1; }

void IFormatCodec::SetOptionsEncode(const Core::Property& options)
{
    m_property.SetChild(TAG_CODEC_OPTIONS_ENCODE, options);
}

const Core::Property& IFormatCodec::GetOptionsEncode() const { return m_property[TAG_CODEC_OPTIONS_ENCODE]; }

void IFormatCodec::SetOptionsAnalyze(const Core::Property& options)
{
    m_property.SetChild(TAG_CODEC_OPTIONS_ANALYZE, options);
}

const Core::Property& IFormatCodec::GetOptionsAnalyze() const
{
    return m_property[TAG_CODEC_OPTIONS_ANALYZE];
}

void IFormatCodec::SetPrivateData(boost::intrusive_ptr<IBlob> blob) { m_privateData = std::move(blob); }

boost::intrusive_ptr<IBlob> IFormatCodec::GetPrivateData() const { return m_privateData; }

boost::intrusive_ptr<IFormatCodec> IFormatCodec::CloneBase() const { return new IFormatCodec(*this); }

} // namespace Zelnor::Conf
