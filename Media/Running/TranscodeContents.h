#pragma once

// Private to the library, not installed.

#include "Media/Planning/OutputContents.h"
#include "Media/Running/Transcode.h"

namespace Zelnor::Media
{

class FaultList;

/// The target of a transcode without a fault, as planning sees it. It refers to the transcode.
OutputFile OutputOf(const Transcode& transcode);

/// Plans what the target of a transcode without a fault gets beside its streams.
void PlanContentsOf(Transcode& transcode, FaultList& faults);

} // namespace Zelnor::Media
