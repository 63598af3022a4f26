#pragma once

#include "Media/Running/JobRun.h"
#include "Media/Verifying/Verification.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <functional>
#include <string>
#include <vector>

/// \file
/// Comparing the finished files of a job with it, whenever they were made:
///
///     for (const Media::TargetVerification& target : Media::VerifyJob(*job))
///     {
///         for (const Media::TargetDifference& difference : target.differences)
///         {
///             std::cout << target.file << ": " << difference.Sentence() << "\n";
///         }
///     }

namespace Zelnor::Media
{

/// How the finished files of a job are verified.
struct VerifyOptions
{
    VerificationDepth depth = VerificationDepth::Quick; ///< how much is decoded
    /// Whether videos are compared with their sources, image by image: as slow as decoding both.
    bool quality = false;
    std::string ffmpeg = "ffmpeg"; ///< the program that measures the quality
    std::string document = {};     ///< what messages call the job; empty: they begin with the place
    CancelToken cancel = {};       ///< targets that come after it was cancelled are left out
    /// Called on the thread that called `VerifyJob`, at the beginning of each target and about twice a
    /// second, where everything is decoded.
    std::function<void(const RunProgress&)> onProgress = {};
};

/// Compares the targets of a job, as they are now, with the job and its sources: streams and their order,
/// codec, profile, size, display aspect ratio, frame rate, pixel format, field order, colours, channel
/// layout, sample rate, language, tags, chapters, covers, attachments, duration, bitrate, and whether they
/// can be decoded. What a container or an encoder is known to change is not a difference. Nothing is written.
/// \throw JobException when the job cannot be run as it is, or a source cannot be read
/// \throw RunException when ffmpeg cannot be started to measure the quality
ZELNOR_API std::vector<TargetVerification> VerifyJob(const Conf::ITranscodingMetaGraph& job,
                                                     const VerifyOptions& options = {});

} // namespace Zelnor::Media
