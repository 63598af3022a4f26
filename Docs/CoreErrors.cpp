#include "Docs/Errors.h"

#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/document.h>

namespace Zelnor::Docs
{

namespace
{

using Core::AtomicFileDataOutput;
using Core::FileDataInput;
using Core::Property;

/// The record that the calls below are made on: {"source": {"filePath": "in.mov", "bitrate": 8000}}.
Property Record()
{
    Property record("source");
    record.SetChildT("filePath", std::string("in.mov"));
    record.SetChildT("bitrate", 8000LL);
    return record;
}

/// What `PropertySerializer::Load` makes of a text.
Property Load(const char* json)
{
    rapidjson::Document document;
    document.Parse(json);
    Property record;
    Core::PropertySerializer::Load(record, document);
    return record;
}

} // namespace

std::vector<ErrorClass> CoreErrors()
{
    using namespace Core;
    return {
        Describe<Exception, std::exception>("Exception", "std::exception, boost::exception",
                                            "The root of all exceptions of the product.",
                                            {"TagDescription", "TagCallStack"}, {}),
        Describe<CoreException, Exception>(
            "CoreException", "Exception", "A failure of the core layer: streams, properties.", {},
            {ZELNOR_EXAMPLE(FileDataInput::Create("missing/job.json")),
             ZELNOR_EXAMPLE(AtomicFileDataOutput::Create("missing/job.json"))}),
        Describe<PropertyException, CoreException>(
            "PropertyException", "CoreException",
            "A property was asked for what it does not have, or JSON is not a record. `Record()` is "
            "`{\"source\": {\"filePath\": \"in.mov\", \"bitrate\": 8000}}`, `Load` is "
            "`PropertySerializer::Load`.",
            {"TagPropertyName", "TagPropertyType", "TagMethodName"},
            {ZELNOR_EXAMPLE(Record()["container"]), ZELNOR_EXAMPLE(Record()["bitrate"].GetString()),
             ZELNOR_EXAMPLE(Record().RemoveChild("container")),
             ZELNOR_EXAMPLE(Load(R"({"source": {"bitrate": 0.5}})")),
             ZELNOR_EXAMPLE(Load(R"({"source": {"fps": [25, 0]}})")),
             ZELNOR_EXAMPLE(Load(R"({"source": 1, "target": 2})"))}),
        Describe<MethodIsNotApplicable, PropertyException>(
            "MethodIsNotApplicable", "PropertyException",
            "Children were to be added to a property that is not a group.", {},
            {ZELNOR_EXAMPLE(Record()["bitrate"].SetChildT("mode", std::string("VBR"))),
             ZELNOR_EXAMPLE(Record()["bitrate"].Add(Property("mode")))}),
    };
}

} // namespace Zelnor::Docs
