#pragma once

#include "Media/Place.h"

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/Export.h"

#include <exception>
#include <string>
#include <utility>
#include <vector>

/// \file
/// What goes wrong on the road from a file to a finished transcode. Every exception carries a description;
/// where it is about a place in a job or a preset, the tags name the place.

namespace Zelnor::Media
{

namespace details
{
struct ZELNOR_API FileTag;
struct ZELNOR_API NodeTag;
struct ZELNOR_API LinkTag;
struct ZELNOR_API StreamTag;
struct ZELNOR_API KeyTag;
struct ZELNOR_API ExitCodeTag;
struct ZELNOR_API MessagesTag;
} // namespace details

/// The root of this library's exceptions.
class ZELNOR_API MediaException : public virtual Exception
{
public:
    /// The file that was read or written, as the caller named it.
    using TagFile = boost::error_info<details::FileTag, std::string>;
    /// The identifier of a node of a job.
    using TagNode = boost::error_info<details::NodeTag, Conf::NodeId>;
    /// The identifiers of the nodes that a link of a job connects, source first.
    using TagLink = boost::error_info<details::LinkTag, std::pair<Conf::NodeId, Conf::NodeId>>;
    /// The index of a stream in its file.
    using TagStream = boost::error_info<details::StreamTag, unsigned int>;
    /// The key of a record, with the names of the groups that hold it: "$$STREAMS$$.audio.bitrate".
    using TagKey = boost::error_info<details::KeyTag, std::string>;

    ~MediaException() noexcept override;
};

/// A media file cannot be read.
class ZELNOR_API ProbeException : public virtual MediaException
{
public:
    ~ProbeException() noexcept override;
};

/// A preset file is missing, or it does not hold a preset.
class ZELNOR_API PresetFileException : public virtual MediaException
{
public:
    ~PresetFileException() noexcept override;
};

/// No job can be planned for a media file, a preset and a request.
class ZELNOR_API PlanException : public virtual MediaException
{
public:
    ~PlanException() noexcept override;
};

/// A job document cannot be read, or its job cannot be run as it is.
class ZELNOR_API JobException : public virtual MediaException
{
public:
    ~JobException() noexcept override;
};

/// Running a job failed.
class ZELNOR_API RunException : public virtual MediaException
{
public:
    ~RunException() noexcept override;
};

/// ffmpeg failed to make a target, which `TagFile` names.
class ZELNOR_API TranscodeFailed : public virtual RunException
{
public:
    /// Of ffmpeg; 128 + the signal's number when a signal ended it.
    using TagExitCode = boost::error_info<details::ExitCodeTag, int>;
    /// The last lines that ffmpeg wrote, in order; there may be none.
    using TagMessages = boost::error_info<details::MessagesTag, std::vector<std::string>>;

    ~TranscodeFailed() noexcept override;
};

namespace details
{
ZELNOR_TAG(MediaException::TagFile)
ZELNOR_TAG(MediaException::TagNode)
ZELNOR_TAG(MediaException::TagLink)
ZELNOR_TAG(MediaException::TagStream)
ZELNOR_TAG(MediaException::TagKey)
ZELNOR_TAG(TranscodeFailed::TagExitCode)
ZELNOR_TAG(TranscodeFailed::TagMessages)
} // namespace details

/// An exception with that description.
template <class E>
E MakeError(const std::string& description)
{
    E exception;
    exception << TagDescription(description);
    return exception;
}

namespace details
{
/// Attaches the tags for what is known of `place`.
ZELNOR_API void TagPlace(const Place& place, const MediaException& exception);
} // namespace details

/// An exception about `place`: the description is the place's text, a colon, and the reason; the tags name
/// the place's parts.
template <class E>
E MakeError(const Place& place, const std::string& reason)
{
    const std::string where = place.Text();
    E exception = MakeError<E>(where.empty() ? reason : where + ": " + reason);
    details::TagPlace(place, exception);
    return exception;
}

} // namespace Zelnor::Media
