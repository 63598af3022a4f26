#pragma once

#include "Media/Planning/JobRequest.h"
#include "Media/Probe/MediaProbe.h"

#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <string>
#include <vector>

/// \file
/// Makes a job from a media file, a preset and a request:
///
///     JobRequest request;
///     request.output = "out";
///     const PlannedJob job = PlanJob(ProbeMedia("in.mkv"), PresetFile::Open("mp3.json"), request);
///     job.graph->Save(AtomicFileDataOutput::Create("job.json")); // job.output is "out.mp3"

namespace Zelnor::Media
{

/// A job, and what the user should know about it.
struct PlannedJob
{
    boost::intrusive_ptr<Conf::ITranscodingMetaGraph> graph; ///< never null
    std::string output;             ///< the output file's full name, extension included
    std::vector<std::string> notes; ///< sentences without an end: "'in.mkv' has no audio, so ..."
};

/// Plans the job that makes the output file from `source`. Nothing is read or written.
///
/// In the graph, the source is node 1 and the output file node 2. The streams between them follow, video
/// before audio before subtitles, and each one's link to the output file carries the full codec descriptor of
/// what it becomes: the preset's settings, and for the rest what the source is, as near as the encoder and
/// the container can do. The job is valid. What else the source has, tags, chapters, covers, attachments and
/// its timecode, is kept where the container can hold it. What is not kept is named in the notes.
///
/// \param preset  any preset; one that is not a `PresetFile` is checked by the same rules
/// \throw PlanException when the source, the preset and the request do not go together, or the installed
///        FFmpeg cannot make a stream; with the tags that name the file, the stream and the preset's key:
///        "in.mkv: video stream 0, p.$$STREAMS$$.video.width: encoder mpeg2video does not support ..."
/// \throw PlanException with the reasons of `ExplainCodecSupport`, when the container cannot hold a codec or
///        the installed FFmpeg does not have its encoder
/// \throw PlanException when the request is strict and something would be lost; it names the first thing
/// \throw PresetFileException when the preset's record does not keep to the rules
ZELNOR_API PlannedJob PlanJob(const MediaFile& source,
                              const boost::intrusive_ptr<const Conf::IPreset>& preset,
                              const JobRequest& request);

} // namespace Zelnor::Media
