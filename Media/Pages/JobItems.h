#pragma once

// Private to the library, not installed.

#include "Media/Jobs/JobFault.h"
#include "Media/Running/Transcode.h"

#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

/// A place on the page that a link leads to, and the text of the link. Both need no escaping.
struct PageLink
{
    std::string anchor;
    std::string text;
};

/// What a page shows of a node or a link of a job. Texts are as `ShownText` makes them.
struct JobItem
{
    std::string anchor; ///< "node-3", "link-3-to-2"
    std::string title;  ///< "Node 3", "Link 3 -> 2"
    std::string number; ///< "3", "3 -> 2"
    std::string name;   ///< of the record, else "no record"
    std::string detail; ///< what tells it from others of that name: "holiday.mkv", "CODEC_ID_H264"
    bool hasRecord = false;
    Core::Property record = {};
    /// An earlier node has its id; it has no record, no links and no faults then.
    bool isHidden = false;
    std::vector<PageLink> links = {};
    /// What is wrong with it; the anchors are those of the list of all faults.
    std::vector<PageLink> faults = {};
};

/// What a page shows of a job, in the job's order.
struct JobItems
{
    std::vector<JobItem> nodes;
    std::vector<JobItem> links;
    /// The positions of the nodes that each link connects.
    std::vector<std::pair<std::size_t, std::size_t>> ends;
};

/// "fault-1" for the first of the faults
std::string FaultAnchor(std::size_t number);
std::string NodeAnchor(Conf::NodeId id);
std::string LinkAnchor(const std::pair<Conf::NodeId, Conf::NodeId>& link);

/// Linear in the job and the faults.
/// \param transcodes  what is known of the job's targets and the streams of its sources
JobItems ReadItems(const Conf::ITranscodingMetaGraph& job, const std::vector<Transcode>& transcodes,
                   const std::vector<JobFault>& faults);

} // namespace Zelnor::Media
