#pragma once

#include "Core/Interfaces/Export.h"

#include "Media/Place.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <string>
#include <vector>

namespace Zelnor::Media
{

/// One reason why a job cannot be run.
struct ZELNOR_API JobFault
{
    enum Kind
    {
        // Of the topology; `groups` tells the nodes.
        TooFewNodes,   ///< `groups` holds the nodes there are
        RepeatedIds,   ///< `groups` holds the ids that more than one node has
        UnlinkedNodes, ///< `groups` holds the nodes without links
        Cycle,         ///< `groups` holds the nodes of one cycle in order, the first one not repeated
        SeveralParts,  ///< each of `groups` holds the nodes of one component, nodes without links left out
        // Of what the job says; `place` and `reason` tell.
        Structure, ///< nodes and links that are not source -> raw stream -> target
        Input,     ///< a source that cannot be read, or lacks the stream that is asked for
        Setting,   ///< a value that is not of the kind or in the range that its key has
        Encoder,   ///< no such encoder here, or one that does not support what is asked for
        Container, ///< no such container here, or one that cannot hold the stream
        Output,    ///< a target that cannot be written
        Loss, ///< something of a source that the target will not have; a reason only where that is strict
    };        ///< What can be wrong.

    Kind kind;                                          ///< what is wrong
    std::vector<std::vector<Conf::NodeId>> groups = {}; ///< of faults of the topology
    Place place = {};                                   ///< of all others
    std::string reason = {};                            ///< a sentence without an end, about the place

    /// Whether it is one of those that `groups` tells.
    bool IsOfTopology() const { return kind <= SeveralParts; }
    /// "cycle", for scripts.
    std::string Name() const;
    /// The sentence for people, with the place inside the document.
    std::string Sentence() const;
};

/// Every reason why the job's topology is not valid; empty for a valid one. Linear in nodes and links.
/// \param document  the job's name in the places; empty when it has none
ZELNOR_API std::vector<JobFault> FindTopologyFaults(const Conf::ITranscodingMetaGraph& job,
                                                    const std::string& document = "");

} // namespace Zelnor::Media
