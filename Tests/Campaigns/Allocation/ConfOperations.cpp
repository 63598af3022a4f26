#include "Tests/Campaigns/Allocation/Operations.h"

#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Conf/Interfaces/MediaTypeUtils.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include "Tests/Support/FakePreset.h"
#include "Tests/Support/Graphs.h"

#include <stdexcept>

namespace Zelnor::Testing
{

namespace
{

using namespace Conf;
using Core::Property;
using Graph = ITranscodingMetaGraph;

const std::string kLong = "a text that is too long to be kept in the string itself";

Property Record()
{
    Property record(kLong);
    record.SetChildT(kLong, kLong);
    record.SetChild("group").SetChildT("rate", Property::Ratio(30000, 1001));
    return record;
}

GraphPtr SampleGraph()
{
    GraphPtr graph = GraphWithNodes(3);
    graph->AddNode(Record());
    graph->AddLink(1, 2, Record());
    graph->AddLink(1, 3, Property());
    graph->AddLink(2, 4, Record());
    return graph;
}

std::string GraphText(const GraphPtr& graph) { return JsonOf(*graph) + Text(graph->GetNodesCount()); }

/// A row that changes a graph.
template <class Act>
Operation Change(std::string function, Act act)
{
    return Row(
        std::move(function), SampleGraph, [act](GraphPtr& graph) { act(*graph); }, GraphText);
}

/// A row that asks a graph for a list, which is appended to another.
template <class Item, class Ask>
Operation Append(std::string function, Ask ask)
{
    return Row(
        std::move(function), [] { return std::vector<Item>(1); },
        [ask, graph = SampleGraph()](std::vector<Item>& out) { ask(*graph, out); },
        [](const std::vector<Item>& out) { return Text(out); });
}

void AddEditing(Operations& rows)
{
    const auto add = [&rows](const std::string& function, auto act) {
        rows.push_back(Change("Conf::ITranscodingMetaGraph::" + function, act));
    };
    add("AddNode", [](Graph& graph) { graph.AddNode(Record()); });
    add("AddLink", [](Graph& graph) { graph.AddLink(3, 4, Record()); });
    add("RemoveLink", [](Graph& graph) { graph.RemoveLink(1, 2); });
    add("RemoveNode", [](Graph& graph) {
        graph.RemoveLink(2, 4);
        graph.RemoveNode(4);
    });
    rows.back().isAllOrNothing = false;
    rows.push_back(Variant("without the order of its identifiers",
                           Row(
                               "Conf::ITranscodingMetaGraph::AddNode",
                               [] {
                                   GraphPtr graph = SampleGraph();
                                   LoadInto(*graph, R"({"vertices":[],"edges":[]})");
                                   return graph;
                               },
                               [](GraphPtr& graph) { graph->AddNode(Record()); }, GraphText)));
    const auto refuse = [&rows](const std::string& function, auto act) {
        rows.push_back(Variant("refused", Call("Conf::ITranscodingMetaGraph::" + function, [act] {
                                   const GraphPtr graph = SampleGraph();
                                   return Refused<ProfileException>([&] { act(*graph); })() +
                                          GraphText(graph);
                               })));
    };
    refuse("AddLink", [](Graph& graph) { graph.AddLink(1, 2, Record()); });
    refuse("AddLink", [](Graph& graph) { graph.AddLink(1, 9, Record()); });
    refuse("RemoveLink", [](Graph& graph) { graph.RemoveLink(2, 1); });
    refuse("RemoveNode", [](Graph& graph) { graph.RemoveNode(1); });
    refuse("operator[]", [](Graph& graph) { graph[9]; });
    refuse("GetLink", [](Graph& graph) { graph.GetLink(2, 1); });
}

void AddGraphQuestions(Operations& rows)
{
    using Nodes = std::vector<NodeId>;
    const std::string graphName = "Conf::ITranscodingMetaGraph::";
    rows.push_back(Call(graphName + "Create", [] { return GraphText(Graph::Create()); }));
    rows.push_back(Call(graphName + "operator[]", [graph = SampleGraph()] { return (*graph)[4]; }));
    rows.push_back(Call(graphName + "GetLink", [graph = SampleGraph()] { return graph->GetLink(1, 2); }));
    rows.push_back(
        Call(graphName + "GetNodesCount", [graph = SampleGraph()] { return graph->GetNodesCount(); }));
    rows.push_back(
        Call(graphName + "TopologyIsValid", [graph = SampleGraph()] { return graph->TopologyIsValid(); }));
    rows.push_back(
        Append<NodeId>(graphName + "Inputs", [](const Graph& graph, Nodes& out) { graph.Inputs(4, out); }));
    rows.push_back(
        Append<NodeId>(graphName + "Outputs", [](const Graph& graph, Nodes& out) { graph.Outputs(1, out); }));
    rows.push_back(
        Append<NodeId>(graphName + "Inputs", [](const Graph& graph, Nodes& out) { graph.Inputs(out); }));
    rows.push_back(
        Append<NodeId>(graphName + "Outputs", [](const Graph& graph, Nodes& out) { graph.Outputs(out); }));
    rows.push_back(
        Append<NodeId>(graphName + "Nodes", [](const Graph& graph, Nodes& out) { graph.Nodes(out); }));
    rows.push_back(Append<std::pair<NodeId, NodeId>>(
        graphName + "Links", [](const Graph& graph, IdPairs& out) { graph.Links(out); }));
    rows.push_back(Call("Conf::PathExistInGraph", [graph = SampleGraph()] {
        return PathExistInGraph(boost::intrusive_ptr<const Graph>(graph), 1, 4);
    }));
    const GraphPtr faulty = GraphWithNodes(6);
    Link(*faulty, {{1, 2}, {2, 1}, {3, 4}});
    rows.push_back(Call("Conf::GetTopologyFaults", [faulty] {
        std::string text;
        for (const TopologyFault& fault : GetTopologyFaults(*faulty))
        {
            text += Text(fault.kind) + Text(fault.groups);
        }
        return text;
    }));
}

void AddDocuments(Operations& rows)
{
    const std::string document = JsonOf(*SampleGraph());
    // A failure keeps what was loaded before it.
    rows.push_back(Partial(Row(
        "Conf::ITranscodingMetaGraph::Load", [] { return Graph::Create(); },
        [document](GraphPtr& graph) { LoadInto(*graph, document); }, GraphText)));
    rows.push_back(Partial(Variant("refused", Call("Conf::ITranscodingMetaGraph::Load", Refused<BadJson>([] {
                                                       Loaded(R"({"vertices":[{"id":1}],"edges":[7]})");
                                                   })))));
    rows.push_back(
        Call("Conf::ITranscodingMetaGraph::Save", [graph = SampleGraph()] { return JsonOf(*graph); }));
    rows.push_back(
        Call("Conf::ITranscodingMetaGraph::SaveInToDot", [graph = SampleGraph()] { return DotOf(*graph); }));
    rows.push_back(Call("Conf::ITranscodingMetaGraph::Save",
                        Refused<ProfileException>([graph = SampleGraph()] { graph->Save(nullptr); })));
}

void AddBuilders(Operations& rows)
{
    const std::string graph = "Conf::ITranscodingMetaGraph::";
    Property preset(kLong);
    preset.SetChildT(kLong, kLong);
    preset.SetChild(IPreset::KEY_STREAMS).SetChild("audio");
    const auto fake = FakePreset::Create(preset, 1, {{IPreset::STREAM_TYPE_AUDIO, {0}}});
    const boost::intrusive_ptr<const IPreset> held = fake;
    rows.push_back(Call(graph + "GetControlledBy", [] { return Graph::GetControlledBy(7); }));
    rows.push_back(Call(graph + "MakeInFileDescription", [] { return Graph::MakeInFileDescription(kLong); }));
    rows.push_back(Call(graph + "MakeOutFileDescription",
                        [held] { return Graph::MakeOutFileDescription(held, kLong, true); }));
    rows.push_back(
        Call(graph + "MakeRawStreamDescription", [] { return Graph::MakeRawStreamDescription(7); }));
    rows.push_back(Row(
        graph + "AddSlaveStreamIndex", [] { return Property("stream"); },
        [](Property& target) { Graph::AddSlaveStreamIndex(target, Record(), 7); },
        [](const Property& target) { return Text(target); }));
    rows.push_back(Call("Conf::IsAudioOnlyPreset", [held] { return IsAudioOnlyPreset(held); }));
    rows.push_back(Call("Conf::IPreset::MediaTypeFromPresetStreamType",
                        [] { return IPreset::MediaTypeFromPresetStreamType(IPreset::STREAM_TYPE_AUDIO); }));
    rows.push_back(Variant(
        "refused", Call("Conf::IPreset::MediaTypeFromPresetStreamType",
                        Refused<std::logic_error>([] { IPreset::MediaTypeFromPresetStreamType(kLong); }))));
    rows.push_back(Call("Conf::IPreset::PresetStreamTypeFormMediaType",
                        [] { return IPreset::PresetStreamTypeFormMediaType(MEDIA_TYPE_AUDIO); }));
}

/// What can be seen of a descriptor.
template <class Descriptor>
std::string DescriptorText(const boost::intrusive_ptr<Descriptor>& descriptor)
{
    return Text(descriptor->GetProperty());
}

/// A row that changes a descriptor.
template <class Descriptor, class Act>
Operation ChangeDescriptor(std::string function, Act act)
{
    return Row(
        std::move(function), [] { return Descriptor::Create(); },
        [act](boost::intrusive_ptr<Descriptor>& descriptor) { act(*descriptor); },
        DescriptorText<Descriptor>);
}

void AddDescriptors(Operations& rows)
{
    rows.push_back(Call("Conf::IFormatCodec::Create", [] { return DescriptorText(IFormatCodec::Create()); }));
    rows.push_back(
        Call("Conf::IFormatCodecAudio::Create", [] { return DescriptorText(IFormatCodecAudio::Create()); }));
    rows.push_back(
        Call("Conf::IFormatCodecVideo::Create", [] { return DescriptorText(IFormatCodecVideo::Create()); }));
    rows.push_back(Call("Conf::IFormatCodecSubtitle::Create",
                        [] { return DescriptorText(IFormatCodecSubtitle::Create()); }));
    rows.push_back(Call("Conf::IFormatFile::Create", [] { return DescriptorText(IFormatFile::Create()); }));
    const auto audio = IFormatCodecAudio::Create();
    audio->SetLanguage(kLong);
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(720, 576, 64, 45);
    const auto subtitle = IFormatCodecSubtitle::Create();
    const auto file = IFormatFile::Create();
    rows.push_back(
        Call("Conf::IFormatCodecAudio::Clone", [audio] { return DescriptorText(audio->Clone()); }));
    rows.push_back(
        Call("Conf::IFormatCodecVideo::Clone", [video] { return DescriptorText(video->Clone()); }));
    rows.push_back(
        Call("Conf::IFormatCodecSubtitle::Clone", [subtitle] { return DescriptorText(subtitle->Clone()); }));
    rows.push_back(Call("Conf::IFormatFile::Clone", [file] { return DescriptorText(file->Clone()); }));
    rows.push_back(Call("Conf::IFormatCodec::CloneBase",
                        [] { return DescriptorText(IFormatCodec::Create()->CloneBase()); }));
    rows.push_back(
        Call("Conf::IFormatCodecAudio::CloneBase", [audio] { return DescriptorText(audio->CloneBase()); }));
    rows.push_back(
        Call("Conf::IFormatCodecVideo::CloneBase", [video] { return DescriptorText(video->CloneBase()); }));
    rows.push_back(Call("Conf::IFormatCodecSubtitle::CloneBase",
                        [subtitle] { return DescriptorText(subtitle->CloneBase()); }));
    rows.push_back(
        Call("Conf::IFormat::Compare", [audio, other = audio->Clone()] { return audio->Compare(other); }));
    rows.push_back(Call("Conf::IFormat::PrintContent", [audio] {
        std::ostringstream text;
        text.exceptions(std::ios::badbit);
        audio->PrintContent(text);
        return text.str();
    }));
}

void AddSettings(Operations& rows)
{
    const auto format = [&rows](const char* function, auto act) {
        rows.push_back(ChangeDescriptor<IFormatFile>(function, act));
    };
    format("Conf::IFormat::SetProperty", [](IFormatFile& file) { file.SetProperty(Record()); });
    format("Conf::IFormat::SetMetadata", [](IFormatFile& file) { file.SetMetadata(Record()); });
    format("Conf::IFormat::SetProperty", [](IFormatFile& file) { file.SetProperty(file.GetMetadata()); });
    const auto audio = [&rows](const char* function, auto act) {
        rows.push_back(ChangeDescriptor<IFormatCodecAudio>(function, act));
    };
    audio("Conf::IFormatCodec::SetOptionsEncode", [](IFormatCodec& c) { c.SetOptionsEncode(Record()); });
    audio("Conf::IFormatCodec::SetOptionsAnalyze", [](IFormatCodec& c) { c.SetOptionsAnalyze(Record()); });
    audio("Conf::IFormatCodecAudio::SetLanguage", [](IFormatCodecAudio& c) { c.SetLanguage(kLong); });
    audio("Conf::IFormatCodecAudio::SetSampleFormat",
          [](IFormatCodecAudio& c) { c.SetSampleFormat(SAMPLE_FMT_S16); });
    audio("Conf::IFormatCodecAudio::SetChannelLayout",
          [](IFormatCodecAudio& c) { c.SetChannelLayout(CH_LAYOUT_STEREO_DOWNMIX); });
    audio("Conf::IFormatCodecAudio::SetSampleInfo", [](IFormatCodecAudio& c) {
        SampleInfo info;
        info.Init(SAMPLE_FMT_S16, 44100, CH_LAYOUT_STEREO_DOWNMIX);
        c.SetSampleInfo(info);
    });
    const auto video = [&rows](const char* function, auto act) {
        rows.push_back(ChangeDescriptor<IFormatCodecVideo>(function, act));
    };
    video("Conf::IFormatCodecVideo::InitByPixelAspect",
          [](IFormatCodecVideo& c) { c.InitByPixelAspect(720, 576, 64, 45); });
    video("Conf::IFormatCodecVideo::InitByFrameAspect",
          [](IFormatCodecVideo& c) { c.InitByFrameAspect(720, 576, 16, 9); });
    video("Conf::IFormatCodecVideo::SetFrameRate", [](IFormatCodecVideo& c) { c.SetFrameRate(30000, 1001); });
    video("Conf::IFormatCodecVideo::SetPixelFormat",
          [](IFormatCodecVideo& c) { c.SetPixelFormat(PIX_FMT_YUV420P); });
}

void AddDescriptorQuestions(Operations& rows)
{
    const auto audio = IFormatCodecAudio::Create();
    SampleInfo info;
    info.Init(SAMPLE_FMT_S16, 44100, CH_LAYOUT_STEREO_DOWNMIX);
    audio->SetSampleInfo(info);
    audio->SetLanguage(kLong);
    audio->SetOptionsEncode(Record());
    const std::string a = "Conf::IFormatCodecAudio::";
    rows.push_back(Call(a + "GetLanguage", [audio] { return audio->GetLanguage(); }));
    rows.push_back(Call(a + "ExistsLanguage", [audio] { return audio->ExistsLanguage(); }));
    rows.push_back(Call(a + "GetSampleFormat", [audio] { return audio->GetSampleFormat(); }));
    rows.push_back(Call(a + "GetChannelLayout", [audio] { return audio->GetChannelLayout(); }));
    rows.push_back(Call(a + "GetSampleInfo", [audio] { return audio->GetSampleInfo().sampleRate; }));
    rows.push_back(
        Call("Conf::IFormatCodec::GetOptionsEncode", [audio] { return audio->GetOptionsEncode(); }));
    rows.push_back(
        Call("Conf::IFormatCodec::GetOptionsAnalyze", [audio] { return audio->GetOptionsAnalyze(); }));
    rows.push_back(Call("Conf::IFormat::GetProperty", [audio] { return audio->GetProperty(); }));
    rows.push_back(Call("Conf::IFormat::GetMetadata", [audio] { return audio->GetMetadata(); }));
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(720, 576, 64, 45);
    video->SetPixelFormat(PIX_FMT_YUV420P);
    const std::string v = "Conf::IFormatCodecVideo::";
    rows.push_back(Call(v + "GetFrameInfo", [video] { return video->GetFrameInfo().width; }));
    rows.push_back(Call(v + "GetFrameAspect", [video] { return video->GetFrameAspect(); }));
    rows.push_back(Call(v + "GetFrameAspectX", [video] { return video->GetFrameAspectX(); }));
    rows.push_back(Call(v + "GetFrameAspectY", [video] { return video->GetFrameAspectY(); }));
    rows.push_back(Call(v + "GetPixelFormat", [video] { return video->GetPixelFormat(); }));
    rows.push_back(Call(v + "GetAcceleratedEncoder", [] {
        return IFormatCodecVideo::GetAcceleratedEncoder(IFormatCodecVideo::ACCELERATOR_NVENC,
                                                        IFormatCodecVideo::CODEC_ID_H264);
    }));
    rows.push_back(Call(v + "GetAcceleratedDecoder", [] {
        return IFormatCodecVideo::GetAcceleratedDecoder(IFormatCodecVideo::ACCELERATOR_CUDA,
                                                        IFormatCodecVideo::CODEC_ID_H264);
    }));
    const auto list = [&rows, v](const char* function, auto ask) {
        rows.push_back(Row(
            v + function, [] { return std::vector<std::string>{kLong}; },
            [ask](std::vector<std::string>& out) { ask(IFormatCodecVideo::ACCELERATOR_IM_HW, out); },
            [](const std::vector<std::string>& out) { return Text(out); }));
    };
    list("GetAcceleratedEncoders", IFormatCodecVideo::GetAcceleratedEncoders);
    list("GetAcceleratedDecoders", IFormatCodecVideo::GetAcceleratedDecoders);
    list("GetAcceleratedEncoderCodecs", IFormatCodecVideo::GetAcceleratedEncoderCodecs);
    list("GetAcceleratedDecoderCodecs", IFormatCodecVideo::GetAcceleratedDecoderCodecs);
    rows.push_back(Call("Conf::operator<<", [] {
        std::ostringstream text;
        text.exceptions(std::ios::badbit);
        text << FrameInfo{720, 576, 64, 45} << GetContainerList();
        return text.str();
    }));
}

void AddLookUps(Operations& rows)
{
    rows.push_back(Call("Conf::CodecIDFromTextID",
                        [] { return CodecIDFromTextID(IFormatCodecVideo::CODEC_ID_MPEG2VIDEO); }));
    rows.push_back(
        Call("Conf::CodecIDFromTextID", Refused<FormatException>([] { CodecIDFromTextID(kLong); })));
    rows.push_back(Call("Conf::CodecIDToTextID", [] { return CodecIDToTextID(AV_CODEC_ID_MPEG2VIDEO); }));
    rows.push_back(Call("Conf::CodecIDToTextID",
                        Refused<FormatException>([] { CodecIDToTextID(AV_CODEC_ID_WRAPPED_AVFRAME); })));
    rows.push_back(Call("Conf::GetCodecMediaType", [] {
        return GetCodecMediaType(IFormatCodecVideo::CODEC_ID_MPEG2VIDEO).value_or(MEDIA_TYPE_AUDIO);
    }));
    rows.push_back(
        Call("Conf::IsAudioBitrateRequired", [] { return IsAudioBitrateRequired("CODEC_ID_MP3"); }));
    rows.push_back(Call("Conf::concat", [] { return concat(mapAudioCodecs, mapVideoCodecs).size(); }));
    rows.push_back(Call("Conf::SampleFmtRecord::Find",
                        [] { return SampleFmtRecord::Find("SAMPLE_FMT_S16")->bitsPerSample; }));
    rows.push_back(
        Call("Conf::SampleFmtRecord::Find", Refused<FormatException>([] { SampleFmtRecord::Find(kLong); })));
    rows.push_back(Call("Conf::LayoutRecord::Find", [] { return *LayoutRecord::Find(2)->textId; }));
    rows.push_back(
        Call("Conf::LayoutRecord::Find", Refused<FormatException>([] { LayoutRecord::Find(kLong); })));
    rows.push_back(
        Call("PixFmtDescription::Find", [] { return PixFmtDescription::Find("YUV420P")->pixFmt; }));
    rows.push_back(
        Call("PixFmtDescription::Find", Refused<std::exception>([] { PixFmtDescription::Find(kLong); })));
    rows.push_back(Call("Conf::SampleInfo::Init", Refused<FormatException>([] {
                            SampleInfo info;
                            info.Init(SAMPLE_FMT_S16, 44100, static_cast<ChannelLayout>(99));
                        })));
    rows.push_back(Call("Conf::IsContainer", [] { return IsContainer("mp4") && !IsContainer(kLong); }));
    rows.push_back(Call("Conf::GetSupportedFormats", [] { return GetSupportedFormats(); }));
    rows.push_back(Call("Conf::GetSupportedFormatExtensions",
                        [] { return GetSupportedFormatExtensions(GetSupportedFormats().front().second); }));
    rows.push_back(Call("Conf::GetSupportedFormatExtensions",
                        Refused<std::exception>([] { GetSupportedFormatExtensions(kLong); })));
    rows.push_back(Call("Conf::GetFormatExtentionTip",
                        [] { return GetFormatExtentionTip(GetSupportedFormats().front().second); }));
    rows.push_back(Call("Conf::GetDefaultFileExtensionForContainer",
                        [] { return GetDefaultFileExtensionForContainer("matroska"); }));
}

void AddTables(Operations& rows)
{
    const auto add = [&rows](const std::string& function, auto get) {
        rows.push_back(Call("Conf::" + function, [get] { return get().size(); }));
    };
    add("GetContainerList", GetContainerList);
    add("GetFormatList", GetFormatList);
    add("GetDisabledFormatParserList", GetDisabledFormatParserList);
    add("GetDisabledFormatMuxerList", GetDisabledFormatMuxerList);
    add("GetDisabledDecoderList", GetDisabledDecoderList);
    add("GetDisabledEncoderList", GetDisabledEncoderList);
    add("GetExternalDecoderList", GetExternalDecoderList);
    add("GetExternalEncoderList", GetExternalEncoderList);
    add("GetMuxerImplList", GetMuxerImplList);
    add("GetParserImplList", GetParserImplList);
    add("GetDecoderImplList", GetDecoderImplList);
    add("GetEncoderImplList", GetEncoderImplList);
    add("GetImageContainerList", GetImageContainerList);
    add("GetAudioContainerList", GetAudioContainerList);
    add("GetFFVideoCodecsMap", GetFFVideoCodecsMap);
    add("GetFFAudioCodecsMap", GetFFAudioCodecsMap);
    add("GetFFSubtitleCodecsMap", GetFFSubtitleCodecsMap);
    add("GetFFCodecsMap", GetFFCodecsMap);
    const auto ask = [&rows](const std::string& function, auto asked) {
        rows.push_back(Call("Conf::" + function, [asked] { return asked(kLong); }));
    };
    ask("CanCopyWithEncryption", CanCopyWithEncryption);
    ask("CanReadWithEncryption", CanReadWithEncryption);
    ask("IsAudioContainer", IsAudioContainer);
    ask("IsImageContainer", IsImageContainer);
    ask("IsExternalDecoder", IsExternalDecoder);
    ask("IsExternalEncoder", IsExternalEncoder);
    rows.push_back(Call("Conf::AVCodecIDToTextID",
                        [] { return AVCodecIDToTextID(AV_CODEC_ID_MPEG2VIDEO, mapVideoCodecs); }));
    rows.push_back(Call("Conf::AVCodecIDFromTextID",
                        Refused<FormatException>([] { AVCodecIDFromTextID(kLong, mapVideoCodecs); })));
}

void AddSmallThings(Operations& rows)
{
    rows.push_back(Call("Conf::IFormatFile::SetChapters", [] {
        const auto file = IFormatFile::Create();
        file->SetChapters(nullptr);
        return file->GetChapters() == nullptr;
    }));
    rows.push_back(Call("Conf::IFormatFile::GetChapters",
                        [] { return IFormatFile::Create()->GetChapters() == nullptr; }));
    rows.push_back(Call("Conf::IFormatCodec::SetPrivateData", [] {
        const auto codec = IFormatCodec::Create();
        codec->SetPrivateData(nullptr);
        return codec->GetPrivateData() == nullptr;
    }));
    rows.push_back(Call("Conf::IFormatCodec::GetPrivateData",
                        [] { return IFormatCodec::Create()->GetPrivateData() == nullptr; }));
    rows.push_back(
        Call("Conf::IFormatCodec::GetCodecType", [] { return IFormatCodec::Create()->GetCodecType(); }));
    rows.push_back(Call("Conf::IFormatCodecAudio::GetCodecType",
                        [] { return IFormatCodecAudio::Create()->GetCodecType(); }));
    rows.push_back(Call("Conf::IFormatCodecVideo::GetCodecType",
                        [] { return IFormatCodecVideo::Create()->GetCodecType(); }));
    rows.push_back(Call("Conf::IFormatCodecSubtitle::GetCodecType",
                        [] { return IFormatCodecSubtitle::Create()->GetCodecType(); }));
    rows.push_back(Call("Conf::IFormatCodecVideo::FrameToPixelAspect", [] {
        std::pair<std::uint32_t, std::uint32_t> aspect;
        IFormatCodecVideo::FrameToPixelAspect(720, 576, 16, 9, aspect.first, aspect.second);
        return aspect;
    }));
    rows.push_back(Call("Conf::IFormatCodecVideo::PixelToFrameAspect", [] {
        std::pair<std::uint32_t, std::uint32_t> aspect;
        IFormatCodecVideo::PixelToFrameAspect(720, 576, 64, 45, aspect.first, aspect.second);
        return aspect;
    }));
    rows.push_back(Call("Conf::SampleInfo::SampleInfo", [] { return SampleInfo().sampleRate; }));
    rows.push_back(Call("Conf::SampleInfo::ReplaceDefaultsForm", [] {
        SampleInfo info;
        info.ReplaceDefaultsForm(SampleInfo());
        return info.sampleRate;
    }));
    rows.push_back(Call("PixFmtDescription::GetPlanWidth",
                        [] { return PixFmtDescription::Find("YUV420P")->GetPlanWidth(720, 1); }));
    rows.push_back(Call("PixFmtDescription::GetPlanHeight",
                        [] { return PixFmtDescription::Find("YUV420P")->GetPlanHeight(576, 1); }));
    rows.push_back(Call("PixFmtDescription::MakeColor",
                        [] { return PixFmtDescription::Find("YUV420P")->MakeColor(255); }));
}

void AddBitrates(Operations& rows)
{
    rows.push_back(Call("Conf::NormBitrate", [] { return NormBitrate(1000000, 5); }));
    rows.push_back(Call("Conf::calculateBitrate", [] { return calculateBitrate(720, 576, 25, coef_h264); }));
    const auto video = IFormatCodecVideo::Create();
    video->InitByPixelAspect(720, 576, 64, 45);
    video->SetFrameRate(25, 1);
    Property record = video->GetProperty();
    record.SetChildT(IFormatCodec::TAG_CODEC_ID, IFormatCodecVideo::CODEC_ID_H264);
    record.SetChildT(IFormatCodec::TAG_BITRATE, 1000000LL);
    record.SetChildT(IFormatCodec::TAG_BITRATE_MODE, IFormatCodec::TAG_BITRATE_MODE_VBR);
    record.SetChildT(IFormatCodec::TAG_QUALITY, 5LL);
    video->SetProperty(record);
    const boost::intrusive_ptr<const IFormatCodec> codec = video;
    rows.push_back(Call("Conf::GetDefaultVideoBitrate", [codec] { return GetDefaultVideoBitrate(codec); }));
    rows.push_back(Call("Conf::GetMinVideoBitrate", [codec] { return GetMinVideoBitrate(codec); }));
    rows.push_back(Call("Conf::GetMaxVideoBitrate", [codec] { return GetMaxVideoBitrate(codec); }));
    rows.push_back(Call("Conf::GetDefaultVideoBitrate", Refused<ConfException>([] {
                            GetDefaultVideoBitrate(boost::intrusive_ptr<const IFormatCodec>());
                        })));
    rows.push_back(
        Call("Conf::GetDefVideoBitrate", [] { return GetDefVideoBitrate(kLong, 1920, 1080, 25); }));
    rows.push_back(Call("Conf::HasVideoBitrateCurve", [] { return HasVideoBitrateCurve(kLong); }));
    rows.push_back(Call("Conf::GetDefaultVideoBitrate",
                        [] { return GetDefaultVideoBitrate(kLong, 1920, 1080, 25, 5); }));
    rows.push_back(
        Call("Conf::GetMinVideoBitrate", [] { return GetMinVideoBitrate(kLong, 1920, 1080, 25, 5); }));
    rows.push_back(
        Call("Conf::GetMaxVideoBitrate", [] { return GetMaxVideoBitrate(kLong, 1920, 1080, 25, 5); }));
    rows.push_back(
        Call("Conf::GetBitrateBounded", [record] { return GetBitrateBounded(record, BOUNDARY_UPPER); }));
    rows.push_back(Call("Conf::GetMinBitrate", [record] { return GetMinBitrate(record); }));
    rows.push_back(Call("Conf::GetMaxBitrate", [record] { return GetMaxBitrate(record); }));
    rows.push_back(Call("Conf::GetMinBitrate", Refused<Exception>([] { GetMinBitrate(Record()); })));
}

} // namespace

Operations ConfOperations()
{
    Operations rows;
    AddEditing(rows);
    AddGraphQuestions(rows);
    AddDocuments(rows);
    AddBuilders(rows);
    AddDescriptors(rows);
    AddSettings(rows);
    AddDescriptorQuestions(rows);
    AddLookUps(rows);
    AddTables(rows);
    AddSmallThings(rows);
    AddBitrates(rows);
    return rows;
}

} // namespace Zelnor::Testing
