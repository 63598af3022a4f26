// A program whose own static objects read what the libraries hold, before `main`.

#include "Conf/Interfaces/CodecMaps.h"
#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Conf/Interfaces/ServiceRecords.h"

#include <iostream>
#include <iterator>
#include <string>
#include <vector>

using namespace Zelnor;

namespace
{

std::vector<std::string> Read()
{
    std::vector<std::string> texts = Conf::GetFormatList();
    texts.push_back(Conf::IFormatFile::MUXER_DEFAULT_IMPL);
    texts.push_back(Conf::TAG_PIX_FMT + Conf::TAG_OBJECT);
    texts.push_back(Conf::CodecIDToTextID(AV_CODEC_ID_H264));
    texts.push_back(Conf::IFormatCodecVideo::Create()->GetProperty().GetName());
    texts.push_back(PixFmtDescription::Find("YUV420P")->name);
    texts.push_back(Conf::SampleFmtRecord::Find("SAMPLE_FMT_S16")->textId);
    for (const auto& row : Conf::videoCodecs)
    {
        texts.push_back(row.second);
    }
    for (const auto& [id, text] : Conf::mapCodecs)
    {
        texts.push_back(text);
    }
    return texts;
}

const std::vector<std::string> readEarly = Read();

} // namespace

int main()
{
    const std::vector<std::string> read = Read();
    if (readEarly != read || read.size() < 2 * std::size(Conf::videoCodecs))
    {
        std::cout << "read " << readEarly.size() << " texts before main, and others then\n";
        return 1;
    }
    std::cout << "the same before main\n";
}
