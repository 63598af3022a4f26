#include "Media/Running/JobPreparation.h"

#include "Media/FileKind.h"
#include "Media/Jobs/FaultList.h"
#include "Media/Planning/EncoderChoice.h"
#include "Media/Planning/OutputTrial.h"
#include "Media/Planning/StreamLimit.h"
#include "Media/Planning/TargetKeys.h"
#include "Media/Probe/StreamKinds.h"
#include "Media/RecordText.h"
#include "Media/Running/Files.h"
#include "Media/Running/FilterCheck.h"
#include "Media/Running/TargetFile.h"
#include "Media/Running/TranscodeCommand.h"
#include "Media/Running/TranscodeContents.h"

#include "Conf/Interfaces/IFormatCodec.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* kNoNameText = "expected the name of a file, found ''";

/// Finds what keeps the targets of a job from being written.
class TargetChecker
{
public:
    TargetChecker(const std::vector<Transcode>& transcodes, const PreparationOptions& options,
                  FaultList& faults)
        : m_options(options), m_faults(faults)
    {
        for (const Transcode& transcode : transcodes)
        {
            for (const MediaFile& input : transcode.inputs)
            {
                m_sources.insert(FileIdentity(input.name));
            }
        }
    }

    void Check(const Transcode& transcode)
    {
        m_place = transcode.place.At(Conf::ITranscodingMetaGraph::KEY_FILEPATH);
        const std::string& name = transcode.output;
        // Why a name is missing, or cannot be one, is said already.
        if (m_faults.IsAt(m_place) || m_faults.IsAt(transcode.place))
        {
            return;
        }
        if (name.empty())
        {
            Add(kNoNameText);
            return;
        }
        CheckDistinct(transcode);
        struct stat status = {};
        const bool exists = ::stat(name.c_str(), &status) == 0;
        if (!exists && CannotBeMade(errno))
        {
            AddCannotWrite(name, errno);
        }
        else if (exists && S_ISDIR(status.st_mode))
        {
            AddCannotWrite(name, EISDIR);
        }
        else if (exists && IsNameless(name))
        {
            AddCannotWrite(name, kNamelessText);
        }
        else if (!exists || S_ISREG(status.st_mode))
        {
            CheckFile(name, exists);
        }
        else if (!MayBeWrittenDirectly(status))
        {
            AddCannotWrite(name, std::string("it is ") + FileKindText(status.st_mode));
        }
    }

private:
    void Add(const std::string& reason) { m_faults.Add(JobFault::Output, m_place, reason); }
    void AddCannotWrite(const std::string& name, const std::string& reason)
    {
        Add("cannot write '" + name + "': " + reason);
    }
    void AddCannotWrite(const std::string& name, int reason)
    {
        AddCannotWrite(name, std::generic_category().message(reason));
    }

    /// A run destroys neither what it reads nor the job itself.
    void CheckDistinct(const Transcode& transcode)
    {
        const std::string& name = transcode.output;
        const std::string identity = FileIdentity(name);
        const bool isOwn =
            std::any_of(transcode.inputs.begin(), transcode.inputs.end(),
                        [&identity](const MediaFile& input) { return FileIdentity(input.name) == identity; });
        if (isOwn)
        {
            Add("the source and the target are the same file: '" + name + "'");
        }
        else if (m_sources.count(identity) != 0)
        {
            Add("the target is a source of the job: '" + name + "'");
        }
        // What messages call the job need not be a file.
        if (::access(m_options.document.c_str(), F_OK) == 0 && FileIdentity(m_options.document) == identity)
        {
            Add("the target is the job's own document: '" + name + "'");
        }
    }

    void CheckFile(const std::string& name, bool exists)
    {
        const auto [other, isNew] = m_targets.try_emplace(FileIdentity(name), m_place.node.value_or(0));
        if (!isNew)
        {
            Add("node " + std::to_string(other->second) + " has the same target: '" + name + "'");
        }
        if (exists && !m_options.mayReplace)
        {
            Add("'" + name + "' exists already; the option 'overwrite' replaces it");
        }
        // It is made beside its place, whether it is there already or not; a link is followed.
        const fs::path folder = fs::path(ResolveLinks(name)).parent_path();
        struct stat status = {};
        if (::stat(folder.c_str(), &status) == 0 && !S_ISDIR(status.st_mode))
        {
            AddCannotWrite(name, ENOTDIR);
        }
        else if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        {
            AddCannotWrite(name, errno);
        }
    }

    const PreparationOptions& m_options;
    FaultList& m_faults;
    Place m_place;
    /// What the names of all sources mean.
    std::set<std::string> m_sources;
    /// The nodes of the targets so far, by what their names mean.
    std::map<std::string, Conf::NodeId> m_targets;
};

/// Many containers hold one stream of sound, whose muxers refuse others only when they run.
void CheckAudioCount(const Transcode& transcode, const std::vector<std::string>& videos,
                     const std::vector<std::string>& audio, FaultList& faults)
{
    if (audio.size() > 1 && CountHeldAudio(transcode.container, videos, audio) < audio.size())
    {
        faults.Add(JobFault::Container, transcode.place,
                   "the " + TooManyAudioText(transcode.container, audio.size()));
    }
}

void CheckAudioCount(const Transcode& transcode, FaultList& faults)
{
    const OutputFile output = OutputOf(transcode);
    std::vector<std::string> videos;
    std::vector<std::string> audio;
    for (const OutputStream& stream : output.streams)
    {
        const StreamKind kind = output.inputs[stream.input]->streams[stream.stream].kind;
        if (kind == StreamKind::Video || kind == StreamKind::Audio)
        {
            (kind == StreamKind::Video ? videos : audio).push_back(CodecIdOf(output, stream));
        }
    }
    CheckAudioCount(transcode, videos, audio, faults);
}

/// The same from the records alone, which do not tell the codec of a stream that is copied.
void CheckAudioCountOfRecords(const Transcode& transcode, FaultList& faults)
{
    std::vector<std::string> videos;
    std::vector<std::string> audio;
    for (const TranscodeStream& stream : transcode.streams)
    {
        if (IsCopied(stream.codec))
        {
            return;
        }
        const StreamKind kind = KindOfRecord(stream.codec.GetName());
        if (kind == StreamKind::Video || kind == StreamKind::Audio)
        {
            (kind == StreamKind::Video ? videos : audio)
                .push_back(TextUnder(stream.codec, Conf::IFormatCodec::TAG_CODEC_ID));
        }
    }
    CheckAudioCount(transcode, videos, audio, faults);
}

/// What the target's record says beside its streams.
void CheckTargetKeys(const Transcode& transcode, FaultList& faults)
{
    const OutputFile output = OutputOf(transcode);
    std::vector<TargetFault> found;
    TargetReader reader(output, found, false);
    reader.Chapters();
    reader.Attachments();
    for (const TargetFault& fault : found)
    {
        faults.Add(JobFault::Setting, transcode.place.At(fault.key), fault.reason);
    }
}

/// Plans what the target holds beside its streams. \returns what it will not have of its sources
std::vector<JobFault> PrepareContents(Transcode& transcode, const PreparationOptions& options,
                                      FaultList& faults)
{
    std::vector<JobFault> losses;
    PlanContentsOf(transcode, faults);
    for (const Loss& loss : transcode.contents.losses)
    {
        if (loss.isAsked)
        {
            continue;
        }
        const MediaFile& input = transcode.inputs[loss.input];
        JobFault fault = {JobFault::Loss, {}, transcode.place, loss.reason};
        if (loss.stream)
        {
            fault.place.streamKind = NameOf(input.streams[*loss.stream].kind);
            fault.place.stream = *loss.stream;
        }
        if (transcode.inputs.size() > 1)
        {
            fault.reason += " (source '" + input.name + "')";
        }
        if (options.strict)
        {
            faults.Add(fault);
        }
        losses.push_back(std::move(fault));
    }
    return losses;
}

} // namespace

std::vector<PreparedTranscode> PrepareJob(const Conf::ITranscodingMetaGraph& job,
                                          const PreparationOptions& options, FaultList& faults)
{
    std::vector<PreparedTranscode> prepared;
    std::vector<Transcode> transcodes = ReadTranscodes(job, options.document, faults);
    TargetChecker targets(transcodes, options, faults);
    for (Transcode& transcode : transcodes)
    {
        std::vector<FFmpegPass> passes = MakeFFmpegArguments(transcode, faults);
        targets.Check(transcode);
        std::vector<JobFault> losses;
        if (faults.Count() == 0)
        {
            CheckFilters(transcode, options.ffmpeg, faults);
            CheckAudioCount(transcode, faults);
            losses = PrepareContents(transcode, options, faults);
            passes = MakeFFmpegArguments(transcode, faults);
        }
        prepared.push_back({std::move(transcode), std::move(passes), std::move(losses)});
    }
    return prepared;
}

void CheckJobDocument(const Conf::ITranscodingMetaGraph& job, const std::string& document, FaultList& faults)
{
    for (const Transcode& transcode : ReadTranscodes(job, document, faults, SourceFiles::Ignored))
    {
        MakeTranscodeCommand(transcode, faults);
        CheckTargetKeys(transcode, faults);
        const Place place = transcode.place.At(Conf::ITranscodingMetaGraph::KEY_FILEPATH);
        if (transcode.output.empty() && !faults.IsAt(place) && !faults.IsAt(transcode.place))
        {
            faults.Add(JobFault::Output, place, kNoNameText);
        }
        if (faults.Count() == 0)
        {
            CheckAudioCountOfRecords(transcode, faults);
        }
    }
}

std::vector<PreparedTranscode> PrepareJob(const Conf::ITranscodingMetaGraph& job,
                                          const PreparationOptions& options)
{
    FaultList faults;
    std::vector<PreparedTranscode> prepared = PrepareJob(job, options, faults);
    faults.ThrowFirst();
    return prepared;
}

std::vector<std::vector<std::string>> CommandsOf(const PreparedTranscode& prepared, const std::string& ffmpeg,
                                                 bool replace)
{
    const PassFiles files = {prepared.transcode.output, "ffmpeg2pass-", replace};
    std::vector<std::vector<std::string>> commands;
    for (const FFmpegPass& pass : prepared.passes)
    {
        std::vector<std::string> words = pass.Arguments(files);
        words.insert(words.begin(), ffmpeg);
        commands.push_back(std::move(words));
    }
    return commands;
}

} // namespace Zelnor::Media
