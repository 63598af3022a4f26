#pragma once

// Private to the library, not installed.

#include "Media/Verifying/ExpectedFile.h"
#include "Media/Verifying/Verification.h"

#include <cstdint>
#include <functional>
#include <string>

namespace Zelnor::Media
{

/// How a file is verified.
struct FileVerificationOptions
{
    VerificationDepth depth = VerificationDepth::Quick;
    /// Asked at every packet; what is found is of no use once it says so.
    std::function<bool()> isCancelled = {};
    /// Told how much of the file is decoded, in microseconds, where all of it is.
    std::function<void(std::int64_t)> onProgress = {};
};

/// Compares a finished file with what it must be. A file that cannot be read is a difference.
/// \param name   the file, wherever it stands now
/// \param shown  what differences and notes call it
TargetVerification VerifyFile(const std::string& name, const std::string& shown, const ExpectedFile& wanted,
                              const FileVerificationOptions& options);

} // namespace Zelnor::Media
