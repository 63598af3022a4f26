#include "Tests/Campaigns/Allocation/Operations.h"

#include "Core/Interfaces/CallStack.h"
#include "Core/Interfaces/DataStream.h"
#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertyReader.h"
#include "Core/Interfaces/PropertySerializer.h"
#include "Core/Interfaces/Utf8.h"
#include "Core/Interfaces/ioPath.h"

#include "Tests/Support/TemporaryFolder.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <limits>

namespace Zelnor::Testing
{

namespace
{

using Core::CoreException;
using Core::MethodIsNotApplicable;
using Core::Property;
using Core::PropertyException;
using Core::PropertySerializer;

const std::string kLong = "a text that is too long to be kept in the string itself";

/// Small and large groups, every type, long and short texts, equal names.
Property Sample()
{
    Property group(kLong + " group");
    group.CreateChildT("number", 5LL);
    group.CreateChildT(kLong, kLong);
    group.SetChild("inner").CreateChildT(kLong, Property::Ratio(1, 2));
    group["inner"].CreateChildT("text", kLong);
    group.Add(Property::None("none"));
    Property& list = group.SetChild("list");
    for (int i = 0; i < 20; ++i)
    {
        list.CreateChildT(i < 18 ? "element " + std::to_string(i) : kLong, kLong);
    }
    return group;
}

/// Nested deeper than everyday records, for which no memory is set aside.
Property Deep(int depth)
{
    Property chain("g");
    Property* innermost = &chain;
    for (int i = 1; i < depth; ++i)
    {
        innermost->CreateChildT(kLong, kLong);
        innermost = &innermost->SetChild("g");
    }
    return chain;
}

std::string SampleJson()
{
    const auto output = Core::MemoryDataOutput::Create();
    Core::JsonZelnorStreamOut stream(*output);
    rapidjson::Writer<Core::JsonZelnorStreamOut> writer(stream);
    const Property sample = Sample();
    Core::PropertyEvents(writer, false).Record(sample);
    return output->GetData();
}

template <class Document>
std::shared_ptr<Document> Parse(const std::string& text)
{
    auto document = std::make_shared<Document>();
    document->template Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
    return document;
}

/// A row that changes a property.
template <class Act>
Operation Change(std::string function, Act act)
{
    return Row(std::move(function), Sample, act, [](const Property& p) { return Text(p); });
}

/// A row that makes a property.
template <class Make>
Operation Construct(std::string variant, Make make)
{
    return Variant(std::move(variant), Call("Core::Property::Property", make));
}

void AddConstructors(Operations& rows)
{
    rows.push_back(Construct("empty", [] { return Property(); }));
    rows.push_back(Construct("group", [] { return Property(kLong); }));
    rows.push_back(Construct("integer", [] { return Property(kLong, 1LL); }));
    rows.push_back(Construct("string", [] { return Property(kLong, kLong); }));
    rows.push_back(Construct("rational", [] { return Property(kLong, Property::Ratio(1, 2)); }));
    rows.push_back(Construct("copy", [sample = Sample()] { return Property(sample); }));
    rows.push_back(Construct("deep copy", [deep = Deep(40)] { return Property(deep); }));
    rows.push_back(Construct("move", [] {
        Property sample = Sample();
        return Property(std::move(sample));
    }));
    rows.push_back(Call("Core::Property::None", [] { return Property::None(kLong); }));
}

void AddChanges(Operations& rows)
{
    const auto add = [&rows](const char* function, const char* variant, auto act) {
        rows.push_back(Variant(variant, Change(function, act)));
    };
    const Property other = Sample();
    add("Core::Property::operator=", "copy", [other](Property& p) { p = other; });
    add("Core::Property::operator=", "its own child", [](Property& p) { p = p["inner"]; });
    add("Core::Property::operator=", "of its child", [](Property& p) { p["inner"] = p; });
    add("Core::Property::operator=", "integer", [](Property& p) { p = 1; });
    add("Core::Property::operator=", "string", [](Property& p) { p = kLong; });
    add("Core::Property::operator=", "rational", [](Property& p) { p = Property::Ratio(1, 3); });
    add("Core::Property::operator=", "its own text", [](Property& p) { p["inner"] = p[kLong].GetString(); });
    add("Core::Property::Add", "copy", [other](Property& p) { p.Add(other); });
    add("Core::Property::Add", "itself", [](Property& p) { p.Add(p); });
    add("Core::Property::Add", "move", [](Property& p) { p.Add(Property(kLong, 1)); });
    add("Core::Property::SetChild", "new", [](Property& p) { p.SetChild(kLong + "!"); });
    add("Core::Property::SetChild", "old", [](Property& p) { p.SetChild(kLong); });
    add("Core::Property::SetChild", "copy", [other](Property& p) { p.SetChild(kLong, other); });
    add("Core::Property::SetChild", "itself", [](Property& p) { p.SetChild("inner", p); });
    add("Core::Property::SetChild", "move", [](Property& p) { p.SetChild(kLong, Property("x")); });
    add("Core::Property::SetChildT", "new", [](Property& p) { p.SetChildT(kLong + "!", kLong); });
    add("Core::Property::SetChildT", "old", [](Property& p) { p.SetChildT(kLong, kLong); });
    add("Core::Property::CreateChildT", "", [](Property& p) { p.CreateChildT(kLong, kLong); });
    add("Core::Property::RemoveChild", "", [](Property& p) { p.RemoveChild("inner"); });
}

/// A row whose property is refused something.
template <class E, class Act>
Operation Refusal(std::string function, Act act)
{
    return Variant("refused", Call(std::move(function), [act] {
                       Property sample = Sample();
                       return Refused<E>([&] { act(sample); })() + Text(sample);
                   }));
}

void AddRefusals(Operations& rows)
{
    const std::string missing = kLong + " that is missing";
    rows.push_back(
        Refusal<PropertyException>("Core::Property::operator[]", [missing](Property& p) { p[missing]; }));
    rows.push_back(Refusal<PropertyException>("Core::Property::operator[]", [](Property& p) { p[99]; }));
    rows.push_back(Refusal<PropertyException>("Core::Property::RemoveChild",
                                              [missing](Property& p) { p.RemoveChild(missing); }));
    rows.push_back(
        Refusal<PropertyException>("Core::Property::GetInt64", [](Property& p) { p["inner"].GetInt64(); }));
    rows.push_back(
        Refusal<PropertyException>("Core::Property::GetString", [](Property& p) { p["inner"].GetString(); }));
    rows.push_back(
        Refusal<PropertyException>("Core::Property::GetRatio", [](Property& p) { p["inner"].GetRatio(); }));
    rows.push_back(Refusal<MethodIsNotApplicable>("Core::Property::Add",
                                                  [](Property& p) { p["number"].Add(Property("x")); }));
    rows.push_back(Refusal<MethodIsNotApplicable>("Core::Property::SetChild",
                                                  [](Property& p) { p["number"].SetChild("x"); }));
    rows.push_back(Refusal<MethodIsNotApplicable>("Core::Property::SetChildT",
                                                  [](Property& p) { p["number"].SetChildT("x", 1); }));
    rows.push_back(Refusal<PropertyException>("Core::Property::CreateChildT", [](Property& p) {
        p.CreateChildT(kLong, std::numeric_limits<unsigned long long>::max());
    }));
}

void AddQuestions(Operations& rows)
{
    rows.push_back(Call("Core::Property::GetInt64", [s = Sample()] { return s["number"].GetInt64(); }));
    rows.push_back(Call("Core::Property::GetString", [s = Sample()] { return s[kLong].GetString(); }));
    rows.push_back(Call("Core::Property::GetString", [] { return Property("", kLong).GetString(); }));
    rows.push_back(Call("Core::Property::GetRatio",
                        [s = Sample()] { return s["inner"][kLong].GetRatio().denominator(); }));
    rows.push_back(Call("Core::Property::GetRatio",
                        [] { return Property("", Property::Ratio(1, 2)).GetRatio().numerator(); }));
    rows.push_back(Call("Core::Property::Count", [s = Sample()] { return s.Count(); }));
    rows.push_back(Call("Core::Property::ChildExists", [s = Sample()] { return s.ChildExists(kLong); }));
    rows.push_back(
        Call("Core::Property::FindChild", [s = Sample()] { return s.FindChild(kLong)->GetString(); }));
    rows.push_back(Call("Core::Property::operator[]", [s = Sample()] { return s[0].GetName(); }));
    rows.push_back(Call("Core::Property::operator[]", [] { return Sample()["inner"]; }));
    rows.push_back(Call("Core::Property::begin", [s = Sample()] { return s.begin()->GetName(); }));
    rows.push_back(Call("Core::Property::end", [s = Sample()] { return s.begin() == s.end(); }));
    rows.push_back(
        Call("Core::Property::operator==", [one = Deep(40), other = Deep(40)] { return one == other; }));
}

void AddPrinting(Operations& rows)
{
    rows.push_back(Call("Core::PrintPropertyValue", [s = Sample()] {
        std::ostringstream text;
        // Otherwise a stream keeps what is thrown to itself.
        text.exceptions(std::ios::badbit);
        PrintPropertyValue(s, 0, text, true, true);
        return text.str();
    }));
    rows.push_back(Call("Core::HasDistinctNames", [s = Sample()] { return HasDistinctNames(s["list"]); }));
    rows.push_back(
        Call("Core::GetSaveRefusal", [s = Sample()] { return Core::GetSaveRefusal(s, {"data"}); }));
    rows.push_back(Variant("refused", Call("Core::GetSaveRefusal",
                                           [d = Deep(513)] { return Core::GetSaveRefusal(d, {"data"}); })));
    rows.push_back(
        Call("Core::CheckDepth", Refused<PropertyException>([d = Deep(513)] { Core::CheckDepth(d, 1); })));
    rows.push_back(Call("Core::Utf8Length", [] { return Core::Utf8Length(kLong); }));
    // It is empty when there is no memory for the system's unwinder.
    rows.push_back(Call("GetCallStack", [] {
        GetCallStack();
        return true;
    }));
}

/// A row that loads the record of a document.
template <class Document>
Operation LoadRow(std::string variant, const std::string& json)
{
    return Variant(std::move(variant),
                   Row(
                       "Core::PropertySerializer::Load",
                       [json] { return std::pair(Sample()["inner"], Parse<Document>(json)); },
                       [](auto& state) { PropertySerializer::Load(state.first, *state.second); },
                       [](const auto& state) { return Text(state.first); }));
}

/// What a caller's document looks like.
std::string DocumentText(const rapidjson::Document& document)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    document.Accept(writer);
    return {buffer.GetString(), buffer.GetSize()};
}

void AddSerializer(Operations& rows)
{
    rows.push_back(LoadRow<rapidjson::Document>("the caller's document", SampleJson()));
    rows.push_back(LoadRow<Core::JsonDocument>("a document of JsonMemory", SampleJson()));
    const auto read = [json = SampleJson()](auto&& load) {
        Core::PropertyReader record;
        rapidjson::StringStream stream(json.c_str());
        rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, Core::JsonMemory> reader;
        reader.Parse<rapidjson::kParseIterativeFlag>(stream, record);
        Property property;
        load(property, record);
        return property;
    };
    rows.push_back(Call("Core::PropertyReader::PropertyReader", [read] {
        return read([](auto& property, auto& record) { PropertySerializer::Load(property, record); });
    }));
    rows.push_back(Call("Core::PropertySerializer::LoadUnwrapped", [read] {
        return read(
            [](auto& property, auto& record) { PropertySerializer::LoadUnwrapped(property, record); });
    }));
    rows.push_back(Row(
        "Core::PropertySerializer::Save", [] { return std::make_shared<rapidjson::Document>(); },
        [sample = Sample()](auto& document) {
            PropertySerializer::Save(sample, *document, document->GetAllocator());
        },
        [](const auto& document) { return DocumentText(*document); }));
    rows.push_back(Variant("refused", Call("Core::PropertySerializer::Load", Refused<PropertyException>([] {
                                               const auto json = Parse<Core::JsonDocument>(
                                                   R"({"g":{"a long name of a member":[1,0]}})");
                                               Property target;
                                               PropertySerializer::Load(target, *json);
                                           }))));
    rows.push_back(Variant(
        "refused", Call("Core::PropertySerializer::Save", Refused<PropertyException>([deep = Deep(513)] {
                            rapidjson::Document json;
                            PropertySerializer::Save(deep, json, json.GetAllocator());
                        }))));
}

void AddStreams(Operations& rows)
{
    const auto parse = [json = SampleJson()] {
        const auto input = Core::MemoryDataInput::Create(json);
        Core::JsonZelnorStreamIn stream(*input);
        Core::JsonDocument document;
        document.ParseStream<rapidjson::kParseIterativeFlag>(stream);
        Property record;
        PropertySerializer::Load(record, document);
        return record;
    };
    rows.push_back(Call("Core::JsonZelnorStreamIn::JsonZelnorStreamIn", parse));
    rows.push_back(Call("Core::JsonZelnorStreamOut::JsonZelnorStreamOut", [s = Sample()] {
        const auto output = Core::MemoryDataOutput::Create();
        Core::JsonZelnorStreamOut stream(*output);
        rapidjson::Writer<Core::JsonZelnorStreamOut, rapidjson::UTF8<>, rapidjson::UTF8<>, Core::JsonMemory>
            writer(stream);
        Core::PropertyEvents(writer, false).Record(s);
        return output->GetData();
    }));
    rows.push_back(Call("Core::MemoryDataInput::Create", [] {
        std::string text(kLong.size(), '\0');
        Core::MemoryDataInput::Create(kLong)->Read(text.data(), text.size());
        return text;
    }));
    rows.push_back(Row(
        "Core::MemoryDataOutput::Write",
        [] {
            auto output = Core::MemoryDataOutput::Create();
            output->Write("begun", 5);
            return output;
        },
        [](auto& output) { output->Write(kLong.data(), kLong.size()); },
        [](const auto& output) { return output->GetData(); }));
    rows.push_back(
        Call("Core::MemoryDataOutput::Create", [] { return Core::MemoryDataOutput::Create()->GetData(); }));
}

void AddUnsupported(Operations& rows)
{
    const auto in = [&rows](const std::string& function, auto act) {
        rows.push_back(Call("Core::JsonZelnorStreamIn::" + function, Refused<CoreException>([act] {
                                const auto input = Core::MemoryDataInput::Create("");
                                Core::JsonZelnorStreamIn stream(*input);
                                act(stream);
                            })));
    };
    in("PutBegin", [](auto& stream) { stream.PutBegin(); });
    in("Put", [](auto& stream) { stream.Put(' '); });
    in("Flush", [](auto& stream) { stream.Flush(); });
    in("PutEnd", [](auto& stream) { stream.PutEnd(nullptr); });
    const auto out = [&rows](const std::string& function, auto act) {
        rows.push_back(Call("Core::JsonZelnorStreamOut::" + function, Refused<CoreException>([act] {
                                const auto output = Core::MemoryDataOutput::Create();
                                Core::JsonZelnorStreamOut stream(*output);
                                act(stream);
                            })));
    };
    out("Peek", [](auto& stream) { stream.Peek(); });
    out("Take", [](auto& stream) { stream.Take(); });
    out("Tell", [](auto& stream) { stream.Tell(); });
    out("PutBegin", [](auto& stream) { stream.PutBegin(); });
    out("PutEnd", [](auto& stream) { stream.PutEnd(nullptr); });
}

/// A folder with the file "file", which holds "old".
std::shared_ptr<TemporaryFolder> FolderWithFile()
{
    auto folder = std::make_shared<TemporaryFolder>();
    WriteFile(*folder / "file", "old");
    return folder;
}

/// What is in the folder; for a file that could not be replaced, it must stay as it was.
std::string FolderText(const std::shared_ptr<TemporaryFolder>& folder)
{
    return Text(folder->Names()) + ReadFile(*folder / "file");
}

void AddFiles(Operations& rows)
{
    rows.push_back(Row(
        "Core::AtomicFileDataOutput::Create", FolderWithFile,
        [](auto& folder) { Core::AtomicFileDataOutput::Create(*folder / "file"); }, FolderText));
    rows.push_back(Row(
        "Core::AtomicFileDataOutput::Commit", FolderWithFile,
        [](auto& folder) {
            const auto output = Core::AtomicFileDataOutput::Create(*folder / "file");
            output->Write("new", 3);
            output->Commit();
        },
        FolderText));
    rows.push_back(Row(
        "Core::FileDataInput::Create", FolderWithFile,
        [](auto& folder) {
            char block[4] = "";
            Core::FileDataInput::Create(*folder / "file")->Read(block, sizeof block);
        },
        FolderText));
    rows.push_back(Row(
        "Core::FileDataOutput::Create", FolderWithFile,
        [](auto& folder) { Core::FileDataOutput::Create(*folder / "file")->Write("new", 3); }, FolderText));
    const auto refused = [&rows](const char* function, auto create) {
        rows.push_back(Variant("refused", Call(function, Refused<CoreException>([create] {
                                                   create(ioPath("/no folder of that name/file"));
                                               }))));
    };
    refused("Core::FileDataInput::Create", Core::FileDataInput::Create);
    refused("Core::FileDataOutput::Create", Core::FileDataOutput::Create);
    refused("Core::AtomicFileDataOutput::Create", Core::AtomicFileDataOutput::Create);
    rows.push_back(Call("ioPath::ioPath", [] { return ioPath(kLong).utf8string(); }));
    rows.push_back(Call("ioPath::ioPath", [] { return ioPath(std::filesystem::path(kLong)).utf8string(); }));
}

} // namespace

Operations CoreOperations()
{
    Operations rows;
    AddConstructors(rows);
    AddChanges(rows);
    AddRefusals(rows);
    AddQuestions(rows);
    AddPrinting(rows);
    AddSerializer(rows);
    AddStreams(rows);
    AddUnsupported(rows);
    AddFiles(rows);
    return rows;
}

} // namespace Zelnor::Testing
