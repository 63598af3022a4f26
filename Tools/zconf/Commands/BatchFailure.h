#pragma once

#include "Media/Batch/BatchResult.h"
#include "Tools/zconf/Console/Errors.h"

namespace Zelnor::Tool
{

/// Of a run in which jobs failed, the exit code that matters most.
class FailureCode
{
public:
    void Add(Media::BatchResult::Failure failure)
    {
        m_hasOther = m_hasOther || failure == Media::BatchResult::Failure::Job ||
                     failure == Media::BatchResult::Failure::Run;
        m_hasFFmpeg = m_hasFFmpeg || failure == Media::BatchResult::Failure::FFmpeg;
        m_hasDifferent = m_hasDifferent || failure == Media::BatchResult::Failure::Different;
    }
    int Get() const
    {
        return m_hasOther       ? kExitFailure
               : m_hasFFmpeg    ? kExitFFmpeg
               : m_hasDifferent ? kExitDifferent
                                : kExitSuccess;
    }

private:
    bool m_hasOther = false;
    bool m_hasFFmpeg = false;
    bool m_hasDifferent = false;
};

} // namespace Zelnor::Tool
