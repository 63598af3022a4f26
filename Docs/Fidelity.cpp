// Prints what is kept of a source for each container: a source with everything is converted into each, and
// the result is looked at with libavformat. Where that is not what the planned job says, the program fails.

#include "Conf/Interfaces/FormatLists.h"
#include "Core/Interfaces/DataStream.h"
#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Probe/FFmpegLog.h"
#include "Media/Running/JobCheck.h"
#include "Media/Running/JobRun.h"
#include "Tests/Support/EverythingClip.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <cctype>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace
{

using namespace Zelnor;

constexpr const char* kYes = "yes";
constexpr const char* kNo = "no";

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string TagIn(const AVDictionary* tags, const char* name)
{
    const AVDictionaryEntry* const tag = av_dict_get(tags, name, nullptr, 0);
    return tag == nullptr ? "" : tag->value;
}

/// What libavformat finds in a file.
struct Found
{
    std::map<std::string, std::string> tags; ///< names in lower case
    std::set<std::string> languages;
    std::vector<std::string> chapters;
    bool hasVideo = false;
    bool hasAudio = false;
    bool hasSubtitle = false;
    bool hasCover = false;
    bool hasFont = false;
    bool hasTimecode = false;
};

void AddTags(const AVDictionary* tags, Found& found)
{
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(tags, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr)
    {
        found.tags.emplace(Lower(tag->key), tag->value);
    }
    found.hasTimecode = found.hasTimecode || TagIn(tags, "timecode") == "01:02:03:04";
}

void AddStream(const AVStream& stream, bool isOgg, Found& found)
{
    const AVMediaType type = stream.codecpar->codec_type;
    const bool isCover = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
    found.hasCover = found.hasCover || isCover;
    found.hasVideo = found.hasVideo || (type == AVMEDIA_TYPE_VIDEO && !isCover);
    found.hasAudio = found.hasAudio || type == AVMEDIA_TYPE_AUDIO;
    found.hasSubtitle = found.hasSubtitle || type == AVMEDIA_TYPE_SUBTITLE;
    found.hasFont = found.hasFont ||
                    (type == AVMEDIA_TYPE_ATTACHMENT && TagIn(stream.metadata, "filename") == "a font.ttf");
    if (type == AVMEDIA_TYPE_AUDIO)
    {
        found.languages.insert(TagIn(stream.metadata, "language"));
    }
    found.hasTimecode = found.hasTimecode || TagIn(stream.metadata, "timecode") == "01:02:03:04";
    if (isOgg)
    {
        AddTags(stream.metadata, found);
    }
}

std::optional<Found> LookAt(const std::string& path)
{
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, ("file:" + path).c_str(), nullptr, nullptr) < 0 ||
        avformat_find_stream_info(opened, nullptr) < 0)
    {
        avformat_close_input(&opened);
        return std::nullopt;
    }
    Found found;
    AddTags(opened->metadata, found);
    for (unsigned int i = 0; i < opened->nb_streams; ++i)
    {
        AddStream(*opened->streams[i], std::string(opened->iformat->name) == "ogg", found);
    }
    for (unsigned int i = 0; i < opened->nb_chapters; ++i)
    {
        found.chapters.push_back(TagIn(opened->chapters[i]->metadata, "title"));
    }
    avformat_close_input(&opened);
    return found;
}

/// Codecs of the presets that come with the program, the quick ones first.
const std::vector<std::string>& VideoCodecs()
{
    static const std::vector<std::string> s_codecs = {"MPEG4", "MPEG2VIDEO", "VP8", "H264", "GIF", "PNG"};
    return s_codecs;
}
const std::vector<std::string>& AudioCodecs()
{
    static const std::vector<std::string> s_codecs = {"AAC", "MP3", "AC3", "VORBIS", "OPUS", "FLAC"};
    return s_codecs;
}

/// The first of the codecs that the muxer says it holds, or is made for.
std::string FirstHeld(const AVOutputFormat& muxer, const std::vector<std::string>& codecs, AVCodecID own)
{
    const auto found = std::find_if(codecs.begin(), codecs.end(), [&muxer, own](const std::string& codec) {
        const AVCodecDescriptor* const descriptor = avcodec_descriptor_get_by_name(Lower(codec).c_str());
        return descriptor != nullptr &&
               (descriptor->id == own ||
                avformat_query_codec(&muxer, descriptor->id, FF_COMPLIANCE_NORMAL) == 1);
    });
    return found == codecs.end() ? "" : *found;
}

std::string StreamsJson(const std::string& video, const std::string& audio)
{
    const std::string videoJson = R"("video":{"codec_id":"CODEC_ID_)" + video + "\"}";
    const std::string audioJson = R"("audio":{"codec_id":"CODEC_ID_)" + audio + R"(","layout":"STEREO"})";
    return "{" + (video.empty() ? audioJson : audio.empty() ? videoJson : videoJson + "," + audioJson) + "}";
}

/// One conversion into a container.
struct Conversion
{
    std::string codecs; ///< "MPEG4, AAC"
    std::vector<std::string> notes;
    Found found;
};

class Converter
{
public:
    explicit Converter(const Testing::TemporaryFolder& folder)
        : m_folder(folder), m_source(Media::ProbeMedia(folder / Testing::MakeEverything(folder)))
    {}

    /// Nothing when no codec of the presets goes into the container.
    std::optional<Conversion> Convert(const std::string& container)
    {
        const AVOutputFormat* const muxer = av_guess_format(container.c_str(), nullptr, nullptr);
        if (muxer == nullptr || (muxer->flags & AVFMT_NOFILE) != 0)
        {
            return std::nullopt;
        }
        const std::string video = FirstHeld(*muxer, VideoCodecs(), muxer->video_codec);
        const std::string audio = FirstHeld(*muxer, AudioCodecs(), muxer->audio_codec);
        auto made = video.empty() && audio.empty() ? std::nullopt : Convert(container, video, audio);
        // Some hold both, but not together.
        return made || video.empty() || audio.empty() ? made : Convert(container, "", audio);
    }

private:
    std::optional<Conversion> Convert(const std::string& container, const std::string& video,
                                      const std::string& audio)
    {
        try
        {
            const auto preset = Media::PresetFile::Read(
                *Core::MemoryDataInput::Create(R"({"p":{"container":")" + container + R"(","$$STREAMS$$":)" +
                                               StreamsJson(video, audio) + "}}"),
                "preset.json");
            Media::JobRequest request;
            // Not one extension for all: some demuxers go by it.
            request.output = (m_folder / ("out-" + container)).string();
            const Media::PlannedJob job = Media::PlanJob(m_source, preset, request);
            if (!Media::CheckJob(*job.graph).empty())
            {
                return std::nullopt;
            }
            Media::RunOptions options;
            options.overwrite = true;
            Media::RunJob(*job.graph, options);
            const auto found = LookAt(job.output);
            if (!found || found->hasVideo == video.empty() || found->hasAudio == audio.empty())
            {
                return std::nullopt;
            }
            return Conversion{video + (video.empty() || audio.empty() ? "" : ", ") + audio, job.notes,
                              *found};
        }
        catch (const Media::MediaException&)
        {
            return std::nullopt;
        }
    }

    const Testing::TemporaryFolder& m_folder;
    Media::MediaFile m_source;
};

bool Has(const std::vector<std::string>& notes, const std::string& text)
{
    return std::any_of(notes.begin(), notes.end(),
                       [&text](const std::string& note) { return note.find(text) != std::string::npos; });
}

/// Prints the table, and finds what the notes of the jobs do not say.
class Table
{
public:
    void Add(const std::string& container, const Conversion& made)
    {
        m_container = container;
        m_notes = &made.notes;
        const Found& found = made.found;
        std::vector<std::string> lost;
        for (const auto& [name, text] : Testing::TagsOfEverything())
        {
            const auto tag = found.tags.find(Lower(name));
            const bool isKept = tag != found.tags.end() && tag->second == text;
            Compare("the tag " + name, isKept,
                    Has(made.notes, "'" + name + "'") || Has(made.notes, "'" + Upper(name) + "'"));
            if (!isKept)
            {
                lost.push_back(name);
            }
        }
        const std::string language = found.languages.empty() ? "" : *found.languages.rbegin();
        const bool isGerman = language == "deu" || language == "ger";
        const bool hasTitles = found.chapters == std::vector<std::string>{"The first one", "The second one"};
        if (found.hasAudio)
        {
            Compare("the language", isGerman, Has(made.notes, "its language, "));
        }
        Compare("chapters", hasTitles, Has(made.notes, "chapters"));
        Compare("the cover", found.hasCover, Has(made.notes, "(cover, "));
        Compare("the font", found.hasFont, Has(made.notes, "'a font.ttf'"));
        Compare("subtitles", found.hasSubtitle, Has(made.notes, "subtitle stream"));
        if (found.hasVideo)
        {
            Compare("the timecode", found.hasTimecode, Has(made.notes, "timecode"));
        }
        std::cout << "| `" << container << "` | " << made.codecs << " | " << TagsText(lost) << " | "
                  << (found.hasAudio ? Text(isGerman) : "") << " | " << Text(hasTitles) << " | "
                  << Text(found.hasCover) << " | " << Text(found.hasFont) << " | "
                  << (found.hasVideo ? Text(found.hasTimecode) : "") << " | " << Text(found.hasSubtitle)
                  << " |\n";
    }

    bool IsRight() const { return m_isRight; }

private:
    static const char* Text(bool isKept) { return isKept ? kYes : kNo; }

    static std::string Upper(std::string text)
    {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        return text;
    }

    static std::string TagsText(const std::vector<std::string>& lost)
    {
        const auto& all = Testing::TagsOfEverything();
        const bool isMost = lost.size() * 2 > all.size();
        std::string text;
        for (const auto& [name, value] : all)
        {
            const bool isLost = std::find(lost.begin(), lost.end(), name) != lost.end();
            text += isLost == isMost ? "" : (text.empty() ? "" : ", ") + name;
        }
        return lost.empty() ? "all" : lost.size() == all.size() ? "none" : isMost ? text : "all but " + text;
    }

    void Compare(const std::string& what, bool isKept, bool isNamed)
    {
        if (isKept == isNamed)
        {
            std::cerr << m_container << ": " << what
                      << (isKept ? " is kept, and named" : " is lost, and not named") << "\n";
            for (const std::string& note : *m_notes)
            {
                std::cerr << "  " << note << "\n";
            }
            m_isRight = false;
        }
    }

    std::string m_container;
    const std::vector<std::string>* m_notes = nullptr;
    bool m_isRight = true;
};

constexpr const char* kHead =
    R"(# What is kept

What a source has is kept, or converted, or named before anything runs: `PlanJob` tells it in the notes of the job, `ReportJob` and
`zconf job check` tell it of a job, `RunJob` and `zconf job run` before they begin. With `strict`, or `--strict`, a job by which
something would be lost is refused. [The job document](job-document.md) says how a job lists tags, chapters, covers and attachments.

- Tags about the work are kept whatever their names; those about the file they stand in are not (`encoder`, `major_brand`,
  statistics). FFmpeg's form of tags that hold every name in MP4 and MOV is not used, since players do not read it.
- Tags that tell how loud the sound is, as ReplayGain's, are kept while the channels stay and nothing is mixed in.
- A language is written in the code that the container knows: `ger` for `deu` in MOV.
- Covers are PNG or JPEG. Ogg holds one of up to 96000 bytes, as a tag; libavformat's muxers of MOV and ASF do not write covers.
- A timecode is kept while the frame rate stays.
- Where two tags share one place in a container, the first one is kept.

This table is what libavformat finds after a file with all of these was converted into each container of the vocabulary that FFmpeg can
write with the codecs of the presets that come with the program. `cmake --build --preset release --target fidelity` writes it anew.
The tags are: )";

} // namespace

int main()
{
    Media::KeepFFmpegMessages();
    const Testing::TemporaryFolder folder;
    std::string names;
    for (const auto& [name, text] : Testing::TagsOfEverything())
    {
        names += (names.empty() ? "" : ", ") + name;
    }
    std::cout << kHead << names << ".\n\n"
              << "| Container | Codecs | Tags | Language | Chapters | Cover | Attachments | Timecode | Text "
                 "subtitles |\n"
              << "|---|---|---|---|---|---|---|---|---|\n";
    Converter converter(folder);
    Table table;
    std::set<std::string> known;
    for (const std::string& container : Conf::GetContainerList())
    {
        const auto made = known.insert(container).second ? converter.Convert(container) : std::nullopt;
        if (made)
        {
            table.Add(container, *made);
        }
    }
    return table.IsRight() ? 0 : 1;
}
