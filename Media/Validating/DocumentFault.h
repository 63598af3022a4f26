#pragma once

#include "Media/Jobs/JobFault.h"
#include "Media/Place.h"

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/ioPath.h"

#include <cstddef>
#include <string>
#include <vector>

/// \file
/// Says everything that is wrong with a job or a preset that somebody wrote by hand, each with its place in
/// the text:
///
///     for (const DocumentFault& fault : ValidateFile("job.json").faults)
///     {
///         std::cout << fault.line << ":" << fault.column << ": " << fault.Sentence() << "\n";
///     }

namespace Zelnor::Media
{

/// Something that is wrong with a document.
struct ZELNOR_API DocumentFault
{
    enum Kind
    {
        Syntax,    ///< the text is not JSON; what follows was not looked at
        Form,      ///< not of the form that every such document has
        Ignored,   ///< the readers take the document, and pass over this
        Topology,  ///< nodes and links that are not one whole
        Structure, ///< nodes and links that are not source -> raw stream -> target
        Setting,   ///< a key that is not known, or a value that is not of the kind or in the range of its key
        Encoder, ///< the installed FFmpeg does not have such an encoder, or it does not support what is asked
                 ///< for
        Container, ///< the installed FFmpeg does not have such a container, or it cannot hold the stream
    };             ///< What can be wrong.

    Kind kind; ///< what is wrong
    /// Where it is in the job or the preset, in the words of their readers' errors.
    Place place = {};
    /// "expected a positive integer, found 'fast'"
    std::string reason = {};
    /// The JSON pointer of the value that it is about, or of the one that lacks something.
    std::string pointer = {};
    /// Where that begins, or its key where the key is wrong: from 1, the column in characters. A byte that
    /// does not belong to a UTF-8 character counts as one.
    std::size_t line = 1;
    std::size_t column = 1;
    /// The same in bytes from the beginning of the text, and how many belong to it.
    std::size_t offset = 0;
    std::size_t length = 0;
    /// As it stands in the text, cut where it is long; "nothing" when something is missing.
    std::string found = {};
    /// Empty where the reason does not say it in this form.
    std::string expected = {};
    /// Names and keys of the vocabulary that were probably meant, the likeliest first; may be empty.
    std::vector<std::string> nearest = {};

    /// "syntax", for scripts.
    std::string Name() const;
    /// The reason with the place before it, without the file.
    std::string Sentence() const;
};

/// What is to be said of a document.
struct DocumentFaults
{
    enum Kind
    {
        Job,
        Preset,
        Unknown, ///< the text does not tell
    };           ///< What documents there are.

    Kind kind = Unknown;                    ///< what the document is
    std::vector<DocumentFault> faults = {}; ///< in the order of the text
    /// Whether these are all. After very many, the rest is not told.
    bool isComplete = true;
};

/// Everything that is wrong with the text of a job or a preset, which are told apart by what they contain. A
/// text without a fault is one that the graph's `Load`, or `PresetFile::Read`, takes, and in whose job
/// `CheckJob` finds nothing but what is about files: sources that are not there, cannot be read, do not have
/// the stream, or have one of another kind than the records say, and targets that cannot be written. No file
/// is opened. Faults of the kind `Ignored` are passed over by those.
///
/// \param text  of any size and content
/// \param name  what the faults' places call the document; may be empty
/// \throw MediaException when FFmpeg's libraries, which know containers and encoders, cannot be used
ZELNOR_API DocumentFaults ValidateDocument(const std::string& text, const std::string& name = "");

/// The same for a file. \throw MediaException as above \throw Core::CoreException when it cannot be read
ZELNOR_API DocumentFaults ValidateFile(const ioPath& path);

} // namespace Zelnor::Media
