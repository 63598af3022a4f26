#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/IRefCountable.h"
#include "Core/Interfaces/MediaType.h"
#include "Core/Interfaces/Property.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace Zelnor::Conf
{

/// A stored set of conversion settings. The preset manager implements this interface; the library defines the
/// vocabulary of the records.
class ZELNOR_API IPreset : public virtual IRefCountable
{
public:
    // KEY_STREAMS, STREAM_TYPE_AUDIO, ...; keys wrapped in "$$" are the structural parts of a preset's record
#define ZELNOR_TEXT(name, text) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IPreset.def"

    ~IPreset() override;

    /// The complete record; valid as long as the preset.
    virtual const Core::Property& GetProperty() const = 0;
    virtual std::uint32_t GetStreamCount() const = 0;
    /// Fills `out` with the indexes of the streams of the type `streamType`, a `STREAM_TYPE_` text.
    virtual void GetStreamIndexes(const std::string& streamType, std::vector<int>& out) const = 0;

    /// The media type of a stream type; both subtitle types are `MEDIA_TYPE_SUBTITLE`.
    /// \throw std::logic_error "Unknown preset stream type"; names are case-sensitive
    static MediaType MediaTypeFromPresetStreamType(const std::string& streamType);
    /// The first stream type of a media type: "subtitles_video" for subtitles, never "subtitles_text".
    /// \throw std::logic_error "Unknown media type"
    static std::string PresetStreamTypeFormMediaType(MediaType mediaType); // kept: "Form"
};

/// Whether the preset has streams and all of them are audio.
/// \throw std::invalid_argument "preset is NULL"
ZELNOR_API bool IsAudioOnlyPreset(const boost::intrusive_ptr<const IPreset>& preset);

} // namespace Zelnor::Conf
