#pragma once

// Private to the library, not installed.

#include "Media/Running/JobVerification.h"
#include "Media/Running/Transcode.h"
#include "Media/Running/TranscodeCommand.h"

#include <optional>
#include <string>

namespace Zelnor::Media
{

/// Gathers the quality of a video from what FFmpeg's filters `psnr` and `ssim` write about each frame.
class QualityMeter
{
public:
    /// A line of one of the two; others are passed over.
    void Take(const std::string& line);
    /// Nothing when there was no frame.
    std::optional<VideoQuality> Get() const;

private:
    double m_error = 0;  ///< sum of the frames' mean squared errors
    double m_square = 0; ///< of the largest sample
    double m_similarity = 0;
    long m_psnrFrames = 0;
    long m_ssimFrames = 0;
};

/// Adds the quality of each video of a finished file that was converted, or a note why there is none.
/// \throw RunException when ffmpeg cannot be started
void MeasureQuality(const Transcode& transcode, const TranscodeCommand& command, const VerifyOptions& options,
                    TargetVerification& verification);

} // namespace Zelnor::Media
