#include "Bindings/Python/Source/Values.h"
#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Records.h"

namespace Zelnor::Python
{

namespace
{

py::object LinkOf(const std::optional<std::pair<Conf::NodeId, Conf::NodeId>>& link)
{
    return link ? py::object(py::make_tuple(link->first, link->second)) : py::object(py::none());
}

py::tuple GroupsOf(const std::vector<std::vector<Conf::NodeId>>& groups)
{
    py::list all;
    for (const std::vector<Conf::NodeId>& group : groups)
    {
        py::list nodes;
        for (const Conf::NodeId node : group)
        {
            nodes.append(node);
        }
        all.append(py::tuple(nodes));
    }
    return py::tuple(all);
}

py::object RecordOrNone(const std::optional<Core::Property>& record)
{
    return record ? ToRecord(*record) : py::object(py::none());
}

} // namespace

// The enumerations of zelnor/_values.py have the same numbers.
static_assert(Media::JobFault::SeveralParts == 4 && Media::JobFault::Loss == 11);
static_assert(Conf::TopologyFault::SEVERAL_PARTS == 4);
static_assert(static_cast<int>(Media::VerificationDepth::Full) == 2);

py::object ValueClass(const char* name) { return py::module_::import("zelnor._values").attr(name); }

py::object ValueOf(const Media::Place& place)
{
    return MakeValue("Place", ToPython(place.file), ToPython(place.node), LinkOf(place.link),
                     ToPython(place.streamKind), ToPython(place.stream), ToPython(place.key),
                     ToPython(place.Text()));
}

py::object ValueOf(const Media::JobFault& fault)
{
    return MakeValue("JobFault", MakeValue("JobFaultKind", static_cast<int>(fault.kind)),
                     GroupsOf(fault.groups), ValueOf(fault.place), ToPython(fault.reason),
                     ToPython(fault.Name()), ToPython(fault.Sentence()));
}

py::object ValueOf(const Conf::TopologyFault& fault)
{
    return MakeValue("TopologyFault", MakeValue("TopologyFaultKind", static_cast<int>(fault.kind)),
                     GroupsOf(fault.groups));
}

py::object ValueOf(const Media::DocumentFault& fault)
{
    return MakeValue("DocumentFault", MakeValue("DocumentFaultKind", static_cast<int>(fault.kind)),
                     ValueOf(fault.place), ToPython(fault.reason), ToPython(fault.pointer), fault.line,
                     fault.column, fault.offset, fault.length, ToPython(fault.found),
                     ToPython(fault.expected), ToTuple(fault.nearest), ToPython(fault.Name()),
                     ToPython(fault.Sentence()));
}

py::object ValueOf(const Media::JobDifference& difference)
{
    return MakeValue("JobDifference", ToPython(difference.place), ToPython(difference.key),
                     ToPython(difference.one), ToPython(difference.other), RecordOrNone(difference.oneValue),
                     RecordOrNone(difference.otherValue));
}

py::object ValueOf(const Media::RunProgress& progress)
{
    return MakeValue("RunProgress", progress.target, progress.targetCount, ToPython(progress.file),
                     progress.pass, progress.passCount, progress.done, ToPython(progress.duration),
                     progress.speed, ToPython(progress.part), progress.isVerifying);
}

py::object ValueOf(const Media::TargetResult& result)
{
    return MakeValue("TargetResult", ToPython(result.file),
                     result.outcome == Media::TargetResult::Outcome::Done, ToTuple(result.warnings),
                     ToTuple(result.notes), result.seconds, result.size);
}

py::object ValueOf(const Media::TargetDifference& difference)
{
    return MakeValue("TargetDifference", ValueOf(difference.place), ToPython(difference.what),
                     ToPython(difference.wanted), ToPython(difference.found),
                     ToPython(difference.Sentence()));
}

py::object ValueOf(const Media::VideoQuality& quality)
{
    return MakeValue("VideoQuality", ValueOf(quality.place), ToPython(quality.psnr), quality.ssim);
}

py::object ValueOf(const Media::TargetVerification& verification)
{
    return MakeValue("TargetVerification", ToPython(verification.file), ToTuple(verification.differences),
                     ToTuple(verification.notes), ToTuple(verification.quality));
}

} // namespace Zelnor::Python
