#include "Docs/Errors.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Conf/Interfaces/MediaTypeUtils.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"
#include "Core/Interfaces/DataStream.h"

#include <boost/rational.hpp>

#include <stdexcept>

namespace Zelnor::Docs
{

namespace
{

using namespace Conf;

/// The graph that the calls below are made on: the nodes 1, 2 and 3, and a link from 1 to 2.
boost::intrusive_ptr<ITranscodingMetaGraph> Job()
{
    auto graph = ITranscodingMetaGraph::Create();
    const NodeId from = graph->AddNode(ITranscodingMetaGraph::MakeInFileDescription("in.mov"));
    const NodeId to = graph->AddNode(ITranscodingMetaGraph::MakeRawStreamDescription(0));
    graph->AddNode(ITranscodingMetaGraph::MakeRawStreamDescription(1));
    graph->AddLink(from, to, Core::Property());
    return graph;
}

void LoadJob(const char* json) { ITranscodingMetaGraph::Create()->Load(Core::MemoryDataInput::Create(json)); }

std::vector<ErrorClass> GraphErrors()
{
    return {
        Describe<ProfileException, ConfException>(
            "ProfileException", "ConfException",
            "A failure of a job's graph. `Job()` is a graph of the nodes 1, 2 and 3 with a link from 1 to 2.",
            {"TagRequestedLink", "TagRequestedNodeId", "TagJsonBadStructure"},
            {ZELNOR_EXAMPLE(Job()->Load(nullptr)), ZELNOR_EXAMPLE(Job()->Save(nullptr))}),
        Describe<NodeNotFound, ProfileException>(
            "NodeNotFound", "ProfileException",
            "There is no node with the identifier in `TagRequestedNodeId`.", {},
            {ZELNOR_EXAMPLE((*Job())[7]), ZELNOR_EXAMPLE(Job()->RemoveNode(7)),
             ZELNOR_EXAMPLE(PathExistInGraph(Job(), 7, 1))}),
        Describe<LinkExists, ProfileException>(
            "LinkExists", "ProfileException", "The link in `TagRequestedLink` is there already, or still.",
            {},
            {ZELNOR_EXAMPLE(Job()->AddLink(1, 2, Core::Property())), ZELNOR_EXAMPLE(Job()->RemoveNode(2))}),
        Describe<LinkNotFound, ProfileException>(
            "LinkNotFound", "ProfileException", "There is no link as in `TagRequestedLink`.", {},
            {ZELNOR_EXAMPLE(Job()->GetLink(2, 1)), ZELNOR_EXAMPLE(Job()->RemoveLink(2, 3))}),
        Describe<BadJson, ProfileException>(
            "BadJson", "ProfileException",
            "A JSON document is not a job; `TagJsonBadStructure` says why. `LoadJob` is "
            "`ITranscodingMetaGraph::Load`.",
            {},
            {ZELNOR_EXAMPLE(LoadJob("not JSON")), ZELNOR_EXAMPLE(LoadJob(R"({"vertices": []})")),
             ZELNOR_EXAMPLE(LoadJob(R"({"vertices": [{"id": 1}, "two"], "edges": []})"))}),
    };
}

} // namespace

std::vector<ErrorClass> ConfErrors()
{
    std::vector<ErrorClass> errors = {
        Describe<ConfException, Exception>("ConfException", "Exception",
                                           "The root of the configuration library's exceptions.", {},
                                           {ZELNOR_EXAMPLE(GetDefaultVideoBitrate(nullptr))}),
        Describe<PresetException, ConfException>("PresetException", "ConfException",
                                                 "For the preset manager; not thrown by this library.", {},
                                                 {}),
        Describe<ConstraintException, ConfException>(
            "ConstraintException", "ConfException",
            "For the preset manager's constraints; not thrown by this library.", {}, {}),
        Describe<ConstraintIsNotApplicableForTypeException, ConstraintException>(
            "ConstraintIsNotApplicableForTypeException", "ConstraintException",
            "A constraint was put on a property of a type that it does not support; not thrown by this "
            "library.",
            {}, {}),
        Describe<CheckedPropertyHasDifferentTypeException, ConstraintException>(
            "CheckedPropertyHasDifferentTypeException", "ConstraintException",
            "A property and its constraint have different types; not thrown by this library.", {}, {}),
        Describe<HelperException, ConfException>("HelperException", "ConfException",
                                                 "For the helpers of callers; not thrown by this library.",
                                                 {}, {}),
        Describe<FormatException, ConfException>(
            "FormatException", "ConfException",
            "A look-up of a codec, a sample format or a channel layout found nothing.", {},
            {ZELNOR_EXAMPLE(CodecIDFromTextID("CODEC_ID_FLUTE")),
             ZELNOR_EXAMPLE(IsAudioBitrateRequired("CODEC_ID_H264")),
             ZELNOR_EXAMPLE(SampleFmtRecord::Find("SAMPLE_FMT_S12")),
             ZELNOR_EXAMPLE(LayoutRecord::Find("stereo"))}),
    };
    for (ErrorClass& error : GraphErrors())
    {
        errors.push_back(std::move(error));
    }
    return errors;
}

std::vector<ErrorClass> StandardErrors()
{
    return {
        Describe<std::invalid_argument, std::logic_error>(
            "std::invalid_argument", "std::logic_error",
            "An argument that no call accepts. The description is the first line of `what()`; the call stack "
            "follows.",
            {},
            {ZELNOR_EXAMPLE(IsAudioOnlyPreset(nullptr)),
             ZELNOR_EXAMPLE(GetDefaultFileExtensionForContainer("cassette")),
             ZELNOR_EXAMPLE(PathExistInGraph(nullptr, 1, 2))}),
        Describe<std::logic_error, std::exception>(
            "std::logic_error", "std::exception",
            "A name that must be one of a short list. The description is the first line of `what()`.", {},
            {ZELNOR_EXAMPLE(IPreset::MediaTypeFromPresetStreamType("music"))}),
        Describe<std::out_of_range, std::logic_error>(
            "std::out_of_range", "std::logic_error",
            "A table has no entry of that name; the text is always the same.", {},
            {ZELNOR_EXAMPLE(IFormatCodecVideo::GetAcceleratedEncoder(IFormatCodecVideo::ACCELERATOR_NVENC,
                                                                     "CODEC_ID_GIF"))}),
        Describe<boost::bad_rational, std::domain_error>(
            "boost::bad_rational", "std::domain_error", "A rational number without a denominator.", {},
            {ZELNOR_EXAMPLE(IFormatCodecVideo::Create()->SetFrameRate(25, 0))}),
    };
}

} // namespace Zelnor::Docs
