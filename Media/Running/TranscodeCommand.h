#pragma once

// Private to the library, not installed.

#include "Media/Running/Transcode.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

class FaultList;

/// Names of ffmpeg's options, without their dashes and the stream that they are for, and their values.
using CodecOptions = std::vector<std::pair<std::string, std::string>>;

/// What ffmpeg is told about one stream.
struct StreamCommand
{
    std::size_t input = 0;
    unsigned int stream = 0;
    bool isCopied = false;
    bool hasTwoPasses = false;
    bool isOneImage = false;           ///< ends after its first frame
    bool needsDurations = false;       ///< each subtitle of the source ends where the next one begins
    std::string merge;                 ///< filters that merge streams into it; empty: none are
    std::string filters;               ///< filters for it alone; empty: none
    CodecOptions analysis;             ///< options for its decoder
    CodecOptions options;              ///< options for its encoder
    std::vector<std::string> metadata; ///< "title=Film"
};

/// What ffmpeg is told about a stream that goes into the output as it is, beside the others.
struct CarriedCommand
{
    std::size_t input = 0;
    unsigned int stream = 0;
    CarriedStream::Form form = CarriedStream::Attachment;
    std::vector<std::string> metadata;
};

/// What ffmpeg is told about one input.
struct InputCommand
{
    std::string file;    ///< its name
    std::string demuxer; ///< the one that the probe found and that reads only this file
};

/// A transcode after everything about it was asked: what ffmpeg is told, but for the names of the files that
/// a run writes.
struct TranscodeCommand
{
    std::vector<InputCommand> inputs;
    std::string muxer;       ///< FFmpeg's name
    bool isPicture = false;  ///< the output file holds one image
    bool startsFast = false; ///< its index is moved to the beginning
    std::vector<std::string> metadata;
    std::vector<StreamCommand> streams;
    MediaSpan span = {};        ///< the part of the inputs that is converted
    bool seeksInInputs = false; ///< whether what stands before it is not even read
    std::vector<CarriedCommand> carried;
    std::string coverTag; ///< a cover as "name=text"; empty: none
    std::vector<MediaChapter> chapters;
    CodecOptions muxerOptions;
};

/// Checks everything in the transcode and its records: each setting is honoured, or it is a fault. What is
/// returned is complete only when there was none.
TranscodeCommand MakeTranscodeCommand(const Transcode& transcode, FaultList& faults);

} // namespace Zelnor::Media
