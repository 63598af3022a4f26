// Any bytes as a document, and any document as a record: whatever is accepted must come back the same.

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertySerializer.h"

#include "Tests/Fuzz/Fuzzer.h"

#include <rapidjson/document.h>
#include <rapidjson/writer.h>

#include <sstream>

namespace Zelnor::Fuzz
{

namespace
{

using Core::Property;
using Core::PropertySerializer;

/// \returns whether the text is one JSON document and nothing else
bool Parse(const std::string& text, rapidjson::Document& document)
{
    const auto input = Core::MemoryDataInput::Create(text);
    Core::JsonZelnorStreamIn stream(*input);
    document.ParseStream<rapidjson::kParseIterativeFlag>(stream);
    return !document.HasParseError() && stream.AtEnd();
}

std::string Write(const Property& record)
{
    const auto output = Core::MemoryDataOutput::Create();
    Core::JsonZelnorStreamOut stream(*output);
    rapidjson::Writer<Core::JsonZelnorStreamOut> writer(stream);
    Core::PropertyEvents(writer, false).Record(record);
    return output->GetData();
}

bool Load(rapidjson::Value& json, Property& record)
{
    const Property before(record);
    try
    {
        PropertySerializer::Load(record, json);
        return true;
    }
    catch (const Core::PropertyException& e)
    {
        const std::string* const description = boost::get_error_info<TagDescription>(e);
        Require(description != nullptr && !description->empty(), "a refusal says why");
        Require(record == before, "a refusal changes nothing");
        return false;
    }
}

void CheckRoundTrips(const Property& record)
{
    rapidjson::Document saved;
    PropertySerializer::Save(record, saved, saved.GetAllocator());
    Property loaded("other", 1);
    Require(Load(saved, loaded), "what was saved loads");
    Require(loaded == record, "what was saved loads equal");

    const std::string text = Write(record);
    rapidjson::Document parsed;
    Require(Parse(text, parsed), "what was written parses");
    Property read;
    Require(Load(parsed, read), "what was written loads");
    Require(read == record, "what was written loads equal");
    Require(Write(read) == text, "what was read is written the same");

    std::ostringstream printed;
    PrintPropertyValue(record, 0, printed, true, true);
    Require(printed.str().find('"') == printed.str().find("\\\"") + 1 ||
                printed.str().find('"') == std::string::npos,
            "a printed quote is escaped");
}

} // namespace

} // namespace Zelnor::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Zelnor;
    rapidjson::Document document;
    if (!Fuzz::Parse(Fuzz::ToString(data, size), document))
    {
        return -1;
    }
    Core::Property record("target");
    if (Fuzz::Load(document, record))
    {
        Fuzz::CheckRoundTrips(record);
    }
    return 0;
}
