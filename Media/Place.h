#pragma once

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Export.h"

#include <optional>
#include <string>
#include <utility>

namespace Zelnor::Media
{

/// Where in a job or a preset something is, as much of it as is known.
struct ZELNOR_API Place
{
    /// The document, as messages call it; empty when it is not known or not from a file.
    std::string file = {};
    /// The node or the link (source first) of a job.
    std::optional<Conf::NodeId> node = {};
    std::optional<std::pair<Conf::NodeId, Conf::NodeId>> link = {};
    /// The stream of the source file: "video" and 0.
    std::string streamKind = {};
    std::optional<unsigned int> stream = {};
    /// The names on the way to a value inside a record: "$$STREAMS$$.audio.bitrate".
    std::string key = {};

    /// "job.json: link 3 -> 2, video stream 0, width"; empty when nothing is known.
    std::string Text() const;
    /// The same without the file.
    std::string TextInDocument() const;
    /// The same place with another key.
    Place At(const std::string& otherKey) const;
    /// The place of a key inside the value that this place names: "p.$$STREAMS$$.audio" and "bitrate".
    Place Under(const std::string& innerKey) const;
};

} // namespace Zelnor::Media
