#include "Conf/Interfaces/BitrateCalculator.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/PrintPropertyValue.h"
#include "FixedPreset.h"

#include <iostream>

using namespace Zelnor;
using namespace Zelnor::Conf;
using Graph = ITranscodingMetaGraph;

int main()
{
    // The application describes a job: a file, what shall become of it, and the link between the two.
    Core::Property settings("target");
    settings.SetChildT(IFormatFile::TAG_CONTAINER, IFormatFile::FORMAT_MP4);
    const auto job = Graph::Create();
    const NodeId from = job->AddNode(Graph::MakeInFileDescription("/media/holiday.mov"));
    const NodeId to = job->AddNode(
        Graph::MakeOutFileDescription(FixedPreset::Create(settings), "/media/holiday.mp4", false));
    job->AddLink(from, to, Graph::GetControlledBy(0));
    std::cout << (job->TopologyIsValid() ? "a valid job\n" : "not a job\n");

    // It hands the job over as a document.
    const auto document = Core::MemoryDataOutput::Create();
    job->Save(document);
    std::cout << document->GetData() << "\n";

    // The engine reads the document back and asks for what it needs.
    const auto work = Graph::Create();
    work->Load(Core::MemoryDataInput::Create(document->GetData()));
    Core::PrintPropertyValue((*work)[to], 0, std::cout, true, true);
    const long long bitrate = GetDefaultVideoBitrate(IFormatCodecVideo::CODEC_ID_H264, 1920, 1080, 25, 1);
    std::cout << "at " << bitrate << " bit/s\n";
    try
    {
        work->GetLink(to, from);
    }
    catch (const LinkNotFound& e)
    {
        const auto link = *boost::get_error_info<LinkNotFound::TagRequestedLink>(e);
        std::cout << "no link from " << link.first << " to " << link.second << "\n";
    }
}
