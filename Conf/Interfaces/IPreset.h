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

/// A saved set of conversion settings. Presets belong to the preset manager, which implements this interface;
/// the library fixes the vocabulary of their records and asks these three questions.
class ZELNOR_API IPreset : public virtual IRefCountable
{
public:
    // KEY_STREAMS, STREAM_TYPE_AUDIO, ...; keys wrapped in "$$" are the structural parts of a preset's record
#define ZELNOR_TEXT(name, text) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IPreset.def"

    ~IPreset() override;

    /// The whole record; valid as long as the preset.
    virtual const Core::Property& GetProperty() const = 0;
    virtual std::uint32_t GetStreamCount() const = 0;
    /// Fills `out` with the indexes of the streams of the type `streamType`, one of the `STREAM_TYPE_` texts.
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
