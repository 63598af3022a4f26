#pragma once

#include "Conf/Interfaces/IFormat.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <cstdint>

namespace Zelnor::Conf
{

/// The chapters of a file. The library does not have an implementation; callers may derive one.
class ZELNOR_API IFormatChapterList : public virtual IRefCountable
{
public:
    ~IFormatChapterList() override;
};

/// The descriptor of a container file, and the vocabulary of files: keys of their records and metadata, names
/// of containers, groups of file dialogs, DVD disks. Its record is named "format_file".
class ZELNOR_API IFormatFile : public virtual IFormat
{
public:
    // TAG_CONTAINER, TAG_TITLE, GROUP_ALL_VIDEO, DVD_STANDARD_PAL, FORMAT_MP4, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#define ZELNOR_SELF(name) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormatFile.def"

    /// Capacities of DVD disks in bytes. Gigabytes are decimal.
    static constexpr std::int64_t DISK_SIZE_DVD_MINI = 1400000000;
    static constexpr std::int64_t DISK_SIZE_DVD_STANDARD = 4700000000;
    static constexpr std::int64_t DISK_SIZE_DVD_DOUBLE_LAYER = 8500000000;

    /// What the files in a group of a file dialog contain.
    enum MediaType : std::int32_t
    {
        MEDIA_ALL = 0,       ///< files of every kind
        MEDIA_VIDEO = 1,     ///< files with video
        MEDIA_AUDIO = 2,     ///< files with audio only
        MEDIA_SUBTITLES = 3, ///< subtitle files
        MEDIA_IMAGES = 4,    ///< still images
    };

    IFormatFile();
    /// Copies the record and the internal properties, even if a derived class initialises its virtual base
    /// `IFormat` in another way. The copy counts its own references.
    IFormatFile(const IFormatFile& other);
    ~IFormatFile() override;
    /// A new descriptor; `Clone` makes a copy.
    static boost::intrusive_ptr<IFormatFile> Create();
    boost::intrusive_ptr<IFormatFile> Clone();

    int AddRef() const override;
    int GetRefCount() const override;
    int Release() const override;

    /// Always null: chapters are not part of a file descriptor.
    boost::intrusive_ptr<IFormatChapterList> GetChapters() const;
    /// Does nothing: the list is not stored.
    void SetChapters(boost::intrusive_ptr<IFormatChapterList> chapters);

private:
    RefCountImpl m_references;
};

} // namespace Zelnor::Conf
