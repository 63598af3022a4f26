#include "Conf/Interfaces/IFormatCodecAudio.h"

#include "Conf/Private/SetChildren.h"

namespace Zelnor::Conf
{

IFormatCodecAudio::IFormatCodecAudio() : IFormatCodec(TAG_FORMAT_CODEC_AUDIO) {}

IFormatCodecAudio::IFormatCodecAudio(const IFormatCodecAudio& other) = default;

IFormatCodecAudio::~IFormatCodecAudio() = default;

boost::intrusive_ptr<IFormatCodecAudio> IFormatCodecAudio::Create() { return new IFormatCodecAudio(); }

boost::intrusive_ptr<IFormatCodecAudio> IFormatCodecAudio::Clone() const
{
    return new IFormatCodecAudio(*this);
}

int IFormatCodecAudio::AddRef() const { return m_audioReferences.AddRefImpl(); }

int IFormatCodecAudio::GetRefCount() const { return m_audioReferences.GetRefCountImpl(); }

int IFormatCodecAudio::Release() const { return m_audioReferences.ReleaseOrDestroyImpl(this); }

int IFormatCodecAudio::GetCodecType() const { return 1; }

boost::intrusive_ptr<IFormatCodec> IFormatCodecAudio::CloneBase() const { return Clone(); }

std::string IFormatCodecAudio::GetLanguage() const
{
    return ExistsLanguage() ? GetMetadata()[TAG_LANGUAGE].GetString() : std::string();
}

void IFormatCodecAudio::SetLanguage(const std::string& language)
{
    Core::Property& metadata =
        m_property.ChildExists(TAG_METADATA) ? m_property[TAG_METADATA] : m_property.SetChild(TAG_METADATA);
    metadata.SetChildT(TAG_LANGUAGE, language);
}

bool IFormatCodecAudio::ExistsLanguage() const
{
    return m_property.ChildExists(TAG_METADATA) && GetMetadata().ChildExists(TAG_LANGUAGE);
}

SampleFormats IFormatCodecAudio::GetSampleFormat() const
{
    return SampleFmtRecord::Find(m_property[TAG_SAMPLE_FORMAT].GetString())->format;
}

void IFormatCodecAudio::SetSampleFormat(SampleFormats format)
{
    m_property.SetChildT(TAG_SAMPLE_FORMAT, SampleFmtRecord::Find(format)->textId);
}

ChannelLayout IFormatCodecAudio::GetChannelLayout() const
{
    return LayoutRecord::Find(m_property[TAG_LAYOUT].GetString())->layout;
}

void IFormatCodecAudio::SetChannelLayout(ChannelLayout layout)
{
    m_property.SetChildT(TAG_LAYOUT, *LayoutRecord::Find(layout)->textId);
}

SampleInfo IFormatCodecAudio::GetSampleInfo() const
{
    const auto sampleRate = static_cast<std::int32_t>(m_property[TAG_SAMPLE_RATE].GetInt64());
    const std::string& sampleFormat = m_property[TAG_SAMPLE_FORMAT].GetString();
    const std::string& layout = m_property[TAG_LAYOUT].GetString();
    SampleInfo info;
    info.Init(SampleFmtRecord::Find(sampleFormat)->format, sampleRate, LayoutRecord::Find(layout)->layout);
    return info;
}

void IFormatCodecAudio::SetSampleInfo(const SampleInfo& info)
{
    SetChildren(m_property, {{TAG_SAMPLE_FORMAT, info.sampleFormat->textId},
                             {TAG_LAYOUT, *info.channelLayout->textId},
                             {TAG_SAMPLE_RATE, info.sampleRate}});
}

} // namespace Zelnor::Conf
