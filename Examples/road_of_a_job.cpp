// The road of a job: make it, check it, write it, read it back.

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/PrintPropertyValue.h"

#include <iostream>

using namespace Zelnor;
using namespace Zelnor::Conf;
using Graph = ITranscodingMetaGraph;

/// Presets belong to the application; this one knows its container and nothing else.
struct Mp4Preset final : IPreset
{
    Mp4Preset() { record.SetChildT(IFormatFile::TAG_CONTAINER, IFormatFile::FORMAT_MP4); }
    const Core::Property& GetProperty() const override { return record; }
    std::uint32_t GetStreamCount() const override { return 0; }
    void GetStreamIndexes(const std::string&, std::vector<int>&) const override {}
    int AddRef() const override { return references.AddRefImpl(); }
    int GetRefCount() const override { return references.GetRefCountImpl(); }
    int Release() const override
    {
        const int left = references.ReleaseImpl();
        return left == 0 ? (delete this, 0) : left;
    }

    Core::Property record{"target"};
    RefCountImpl references;
};

int main()
{
    const boost::intrusive_ptr<const IPreset> preset(new Mp4Preset);
    const auto job = Graph::Create();
    const NodeId source = job->AddNode(Graph::MakeInFileDescription("/media/holiday.mov"));
    const NodeId target = job->AddNode(Graph::MakeOutFileDescription(preset, "/media/holiday.mp4", false));
    job->AddLink(source, target, Graph::GetControlledBy(0));
    std::cout << "valid: " << std::boolalpha << job->TopologyIsValid() << "\n";

    const auto document = Core::MemoryDataOutput::Create();
    job->Save(document);
    std::cout << document->GetData() << "\n";

    const auto copy = Graph::Create();
    copy->Load(Core::MemoryDataInput::Create(document->GetData()));
    Core::PrintPropertyValue((*copy)[target], 0, std::cout, true, true);
    try
    {
        copy->AddLink(target, 7, Core::Property("link"));
    }
    catch (const NodeNotFound& e)
    {
        std::cout << "no node " << *boost::get_error_info<NodeNotFound::TagRequestedNodeId>(e) << "\n";
    }
}
