#pragma once

// Private to the library, not installed.

#include "Media/Planning/MuxerTrial.h"

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// \file
/// What becomes of all that a source has beside the images and sounds that are converted: its tags, chapters,
/// covers, attachments, its timecode, and the streams that nobody takes.

namespace Zelnor::Media
{

/// A stream of an output file.
struct OutputStream
{
    std::size_t input;                ///< position of its source
    unsigned int stream;              ///< index in its source
    std::vector<unsigned int> merged; ///< streams of the source that are merged into it
    const Core::Property* codec;      ///< the record of what it becomes
    bool isCopied;
};

/// An output file as a job describes it.
struct OutputFile
{
    std::vector<const MediaFile*> inputs;
    std::string container;
    const Core::Property* target; ///< its record
    std::vector<OutputStream> streams;
    /// Of each input, the streams that somebody chose to leave out; those of inputs behind its end are none.
    std::vector<std::vector<unsigned int>> leftOut = {};

    /// Whether the input's stream becomes one of the streams, or is merged into one.
    bool Uses(std::size_t input, unsigned int index) const;
    /// Whether somebody chose to leave it out.
    bool LeavesOut(std::size_t input, unsigned int index) const;
};

/// Something of a source that the output file will not have.
struct Loss
{
    std::size_t input = 0;
    std::optional<unsigned int> stream; ///< of that source; nothing: of the file
    std::string reason;                 ///< "(ac3, deu) is left out; the output file has 1 audio stream"
    bool isAsked = false;               ///< somebody asked for it: it does not make a strict job fail
};

/// A stream that goes into the output file as it is, beside those that are converted.
struct CarriedStream
{
    enum Form
    {
        Cover,      ///< an attached picture
        CoverFile,  ///< a cover that the container holds as an attachment
        CoverTag,   ///< a cover that the container holds as a tag
        Attachment, ///< a font, a text
    };

    std::size_t input;
    unsigned int stream;
    Form form;
};

/// A value of a target's record that is not as it must be.
struct TargetFault
{
    std::string key; ///< "chapters"
    std::string reason;
};

/// What an output file holds beside its converted streams.
struct OutputContents
{
    std::vector<MediaChapter> chapters;
    std::vector<CarriedStream> carried;
    std::vector<Loss> losses;
    std::vector<TargetFault> faults;
};

/// Finds out what of the sources the output file will have, as its record says and its container can, and
/// names the rest.
OutputContents PlanContents(const OutputFile& output);

/// Writes into the records of a new job what of its one source the container can hold: tags into the target
/// and the streams' codecs, chapters and attachments into the target.
/// \param codecs  the records of the streams, in the order of `output.streams`
void FillRecords(const OutputFile& output, Core::Property& target,
                 const std::vector<Core::Property*>& codecs);

/// Whether the output's sound has other channels than its source's, or other sound is mixed into it.
bool IsSoundChanged(const OutputFile& output);

/// The text of FFmpeg's metadata format that gives the chapters.
std::string ChaptersText(const std::vector<MediaChapter>& chapters);
/// Whether that text is too long to be given to a program.
bool AreTooLong(const std::vector<MediaChapter>& chapters);

} // namespace Zelnor::Media
