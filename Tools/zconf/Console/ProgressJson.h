#pragma once

#include "Media/Running/JobRun.h"
#include "Media/Verifying/Verification.h"

#include <string>
#include <vector>

/// \file
/// Progress for programs: a JSON object on each line, told apart by its member "event". Times are in seconds.

namespace Zelnor::Tool
{

/// {"event":"progress","target":0,"targets":1,"file":"out.mp4","pass":0,"passes":1,"done":1.2,...}; what is
/// unknown is left out. While all of a target is decoded to verify it, "verifying" is true.
std::string ProgressJson(const Media::RunProgress& progress);

/// {"event":"done","file":"out.mp4","seconds":5.1,"size":12345,"warnings":[]}
std::string DoneJson(const Media::TargetResult& target);

/// {"event":"cancelled","file":"out.mp4"}
std::string CancelledJson(const Media::TargetResult& target);

/// {"event":"failed","file":"out.mp4","messages":["..."]}
std::string FailedJson(const std::string& file, const std::vector<std::string>& messages);

/// {"event":"verified","file":"out.mp4","differences":["..."],"notes":["..."],"quality":[{"place":"link 3 ->
/// 2, video stream 0","psnr":42.1,"ssim":0.99}]}; images that are equal do not have a PSNR
std::string VerifiedJson(const Media::TargetVerification& target);

} // namespace Zelnor::Tool
