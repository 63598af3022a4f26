#include "Conf/Interfaces/IFormatFile.h"

namespace Zelnor::Conf
{

IFormatChapterList::~IFormatChapterList() = default;

IFormatFile::IFormatFile() : IFormat(TAG_FORMAT_FILE) {}

IFormatFile::IFormatFile(const IFormatFile& other) : IFormat(TAG_FORMAT_FILE)
{
    // Not in the initialiser list: it is ignored when a derived class initialises the virtual base.
    IFormat::operator=(other);
}

IFormatFile::~IFormatFile() = default;

boost::intrusive_ptr<IFormatFile> IFormatFile::Create() { return new IFormatFile(); }

boost::intrusive_ptr<IFormatFile> IFormatFile::Clone() { return new IFormatFile(*this); }

int IFormatFile::AddRef() const { return m_references.AddRefImpl(); }

int IFormatFile::GetRefCount() const { return m_references.GetRefCountImpl(); }

int IFormatFile::Release() const { return m_references.ReleaseOrDestroyImpl(this); }

boost::intrusive_ptr<IFormatChapterList> IFormatFile::GetChapters() const { return nullptr; }

void IFormatFile::SetChapters(boost::intrusive_ptr<IFormatChapterList>) {}

} // namespace Zelnor::Conf
