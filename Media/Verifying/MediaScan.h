#pragma once

// Private to the library, not installed.

#include "Media/Verifying/Verification.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// What was seen of one stream. Times are microseconds from the beginning of the file.
struct StreamScan
{
    std::optional<std::int64_t> begin; ///< of its first packet
    std::optional<std::int64_t> end;   ///< of its last packet, its duration included; empty: not seen
    std::int64_t packets = 0;
    std::int64_t bytes = 0;
    std::int64_t frameLength = 0; ///< microseconds of the longest packet
    std::int64_t frames = 0;      ///< that were decoded
    bool hasDecoder = true;
    std::string error; ///< of the decoder, with its time; empty: there was none

    /// Microseconds between the beginning and the end.
    std::optional<std::int64_t> Length() const
    {
        return begin && end ? std::optional(*end - *begin) : std::nullopt;
    }
};

/// What was seen of a file.
struct MediaScan
{
    bool isWhole = false;   ///< every packet was read, so that packets and bytes are known
    bool isDecoded = false; ///< every packet was decoded
    bool isCancelled = false;
    std::vector<StreamScan> streams;
};

/// Is told how far a file is decoded, in microseconds from its beginning, at every packet.
using ScanProgress = std::function<void(std::int64_t)>;

/// Reads every packet of a file and decodes none.
/// \throw ProbeException
MediaScan MeasurePackets(const std::string& name, const std::function<bool()>& isCancelled);

/// Decodes the first, middle and last second of a file, or all of it; a short file is decoded as a whole. The
/// packets of a small file are all read.
/// \param onProgress  called where all of the file is decoded
/// \throw ProbeException
MediaScan DecodeFile(const std::string& name, VerificationDepth depth,
                     const std::function<bool()>& isCancelled, const ScanProgress& onProgress = {});

} // namespace Zelnor::Media
