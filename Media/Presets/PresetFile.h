#pragma once

#include "Conf/Interfaces/IPreset.h"
#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A preset that is kept as a file: the JSON form of one record, named like the preset, that says what an
/// output file shall be.
///
///     {"mp3": {"$$TYPE_ID$$": "format_mp3", "name": "MP3", "id": "mp3", "container": "mp3",
///              "$$STREAMS$$": {"audio": {"codec_id": "CODEC_ID_MP3", "bitrate": 192000}}}}
///
/// Its "$$STREAMS$$" has one record for each stream of the output, named by the stream's type, with the
/// codec's settings under the keys of the codec descriptors. A stream's index is its position there. Where
/// several streams are of one type, "$$STREAMS$$" is an array of records.
class ZELNOR_API PresetFile final : public Counted<Conf::IPreset>
{
public:
    /// Reads a preset and checks that it obeys the rules. Whether the installed FFmpeg can make its streams,
    /// and the container hold them, is asked when a job is planned, and by `ValidateFile`.
    /// \throw PresetFileException with file, place and what was expected there: "mp3.json:
    ///        mp3.$$STREAMS$$.audio.bitrate: expected a positive integer, found 'fast'"; "Cannot open
    ///        'mp3.json': No such file or directory"
    static boost::intrusive_ptr<PresetFile> Open(const ioPath& path);
    /// The same from a stream, which messages call `name`. What the stream throws passes through.
    static boost::intrusive_ptr<PresetFile> Read(Core::IDataInput& input, const std::string& name);

    const Core::Property& GetProperty() const override { return m_record; }
    std::uint32_t GetStreamCount() const override;
    void GetStreamIndexes(const std::string& streamType, std::vector<int>& out) const override;

private:
    explicit PresetFile(Core::Property record);
    ~PresetFile() override;

    Core::Property m_record;
};

} // namespace Zelnor::Media
