#pragma once

#include "Media/MediaException.h"
#include "Media/Place.h"

#include "Core/Interfaces/Export.h"

#include <optional>
#include <string>
#include <vector>

/// \file
/// What is found when a finished file is compared with the job that it was made for.

namespace Zelnor::Media
{

namespace details
{
struct ZELNOR_API DifferencesTag;
struct ZELNOR_API KeptFileTag;
} // namespace details

/// How closely a finished file is looked at.
enum class VerificationDepth
{
    Off,   ///< not at all
    Quick, ///< its streams, and the first, middle and last seconds decoded
    Full,  ///< its streams, and everything decoded
};

/// One thing in which a finished file is not what its job says.
struct ZELNOR_API TargetDifference
{
    Place place;        ///< in the job: the target's node, or the link of the stream
    std::string what;   ///< "duration"
    std::string wanted; ///< "10.000 s"
    std::string found;  ///< "5.000 s"

    /// "link 3 -> 2, video stream 0: duration: wanted 10.000 s, found 5.000 s"
    std::string Sentence() const;
};

/// How near the images of a finished video are to those of its source, converted to the same size and rate.
struct VideoQuality
{
    Place place;                ///< the link of the stream
    std::optional<double> psnr; ///< decibels, over all planes; empty: the images are equal
    double ssim = 0;            ///< 1: the images are equal
};

/// What became of the verification of one target.
struct TargetVerification
{
    std::string file;                          ///< its name, as the job gives it
    std::vector<TargetDifference> differences; ///< empty: it is what the job says
    std::vector<std::string> notes;            ///< what could not be verified, as sentences without an end
    std::vector<VideoQuality> quality;         ///< of its videos, when it was asked for
};

/// A target that ffmpeg has made is not what its job says, which `TagFile` names. It was not put in place.
class ZELNOR_API VerificationFailed : public virtual RunException
{
public:
    /// All differences; there is at least one.
    using TagDifferences = boost::error_info<details::DifferencesTag, std::vector<TargetDifference>>;
    /// The name under which the file was kept, if that was asked for.
    using TagKeptFile = boost::error_info<details::KeptFileTag, std::string>;

    ~VerificationFailed() noexcept override;
};

namespace details
{
ZELNOR_TAG(VerificationFailed::TagDifferences)
ZELNOR_TAG(VerificationFailed::TagKeptFile)
} // namespace details

} // namespace Zelnor::Media
