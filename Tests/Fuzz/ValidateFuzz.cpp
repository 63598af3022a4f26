// Feeds documents to validation: what it finds nothing in is taken by the readers, what they refuse has a
// fault, and each fault has a place in the text.

#include "Media/Jobs/JobFile.h"
#include "Media/MediaException.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Validating/DocumentFault.h"

#include "Core/Interfaces/DataStream.h"
#include "Tests/Fuzz/Fuzzer.h"

#include <algorithm>

namespace
{

using namespace Zelnor;

bool IsJob(const std::string& document)
{
    try
    {
        Media::ReadJob(*Core::MemoryDataInput::Create(document), "a.json");
        return true;
    }
    catch (const Media::JobException&)
    {
        return false;
    }
}

bool IsPreset(const std::string& document)
{
    try
    {
        Media::PresetFile::Read(*Core::MemoryDataInput::Create(document), "a.json");
        return true;
    }
    catch (const Media::PresetFileException&)
    {
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string document = Fuzz::ToString(data, size);
    const Media::DocumentFaults found = Media::ValidateDocument(document, "a.json");
    bool isRefused = false;
    for (const Media::DocumentFault& fault : found.faults)
    {
        isRefused = isRefused || fault.kind != Media::DocumentFault::Ignored;
        Fuzz::Require(fault.offset + fault.length <= size, "a fault is in the text");
        const auto end = document.begin() + static_cast<std::ptrdiff_t>(fault.offset);
        const auto lines = static_cast<std::size_t>(std::count(document.begin(), end, '\n'));
        Fuzz::Require(fault.line == lines + 1 && fault.column > 0, "a fault has a line");
        Fuzz::Require(!fault.reason.empty() && !fault.Name().empty(), "a fault has a reason");
    }
    switch (found.kind)
    {
    case Media::DocumentFaults::Job:
        Fuzz::Require(isRefused || IsJob(document), "a job without faults is taken");
        Fuzz::Require(!IsPreset(document), "a job is not a preset");
        break;
    case Media::DocumentFaults::Preset:
        Fuzz::Require(isRefused != IsPreset(document), "a preset without faults is taken, and no other");
        Fuzz::Require(!IsJob(document), "a preset is not a job");
        break;
    case Media::DocumentFaults::Unknown:
        Fuzz::Require(isRefused && !IsJob(document) && !IsPreset(document), "what is neither is refused");
        return -1;
    }
    return 0;
}
