// Writes job.schema.json or preset.schema.json to standard output: what a document may hold, from the tables
// that its readers use. What a schema cannot say, and what differs from one FFmpeg to the next, it leaves
// open.

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatCodecAudio.h"
#include "Conf/Interfaces/IFormatCodecSubtitle.h"
#include "Conf/Interfaces/IFormatCodecVideo.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Conf/Interfaces/PixelFormatDescription.h"
#include "Media/Jobs/JobKeys.h"
#include "Media/Options/SettingRules.h"
#include "Media/Options/ValueNames.h"
#include "Media/Presets/PresetRules.h"

#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <cstdio>
#include <cstring>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Docs
{

namespace
{

using Conf::IFormatCodec;
using Conf::IFormatFile;
using Conf::IPreset;
using Conf::ITranscodingMetaGraph;
using Texts = std::vector<std::string>;
/// The properties of an object: keys, and schemas of their values.
using Properties = std::vector<std::pair<std::string, std::string>>;

std::string Quoted(const std::string& text)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    return buffer.GetString();
}

std::string List(const Texts& items)
{
    std::string list;
    for (const std::string& item : items)
    {
        list += (list.empty() ? "" : ",") + item;
    }
    return "[" + list + "]";
}

Texts QuotedAll(Texts texts)
{
    for (std::string& text : texts)
    {
        text = Quoted(text);
    }
    return texts;
}

std::string Enum(const Texts& names) { return "{\"enum\":" + List(QuotedAll(names)) + "}"; }
std::string AnyOf(const Texts& schemas) { return "{\"anyOf\":" + List(schemas) + "}"; }
std::string AllOf(const Texts& schemas) { return "{\"allOf\":" + List(schemas) + "}"; }
std::string Ref(const std::string& name) { return "{\"$ref\":\"#/$defs/" + name + "\"}"; }

std::string Integer(const std::string& least, const std::string& most)
{
    return R"({"type":"integer","minimum":)" + least + ",\"maximum\":" + most + "}";
}

std::string Members(const Properties& properties)
{
    std::string members;
    for (const auto& [key, schema] : properties)
    {
        members += (members.empty() ? "" : ",") + Quoted(key) + ":" + schema;
    }
    return "{" + members + "}";
}

std::string Object(const Properties& properties, const std::string& others, const Texts& required = {},
                   const std::string& more = "")
{
    return R"({"type":"object","properties":)" + Members(properties) + ",\"additionalProperties\":" + others +
           (required.empty() ? "" : ",\"required\":" + List(QuotedAll(required))) + more + "}";
}

/// An object of one member.
std::string Single(const std::string& value)
{
    return R"({"type":"object","minProperties":1,"maxProperties":1,"additionalProperties":)" + value + "}";
}

/// A group whose form is known, which may also be written as an array of records.
std::string Group(const std::string& object)
{
    return AnyOf({object, R"({"type":"array","items":)" + Ref("record") + "}"});
}

/// A list of values under empty names, as an array of records or as an object.
std::string ListOf(const std::string& value)
{
    return AnyOf({R"({"type":"array","items":)" + Single(value) + "}",
                  R"({"type":"object","additionalProperties":)" + value + "}"});
}

std::string PixelFormatNumbers()
{
    Texts numbers;
    for (const PixFmtDescription& record : PixFmtDescription::s_pixelFormatRecords)
    {
        numbers.push_back(std::to_string(record.pixFmt));
    }
    return "{\"enum\":" + List(numbers) + "}";
}

/// The schema of what messages call that.
std::string SchemaOf(const std::string& key, const std::string& expected)
{
    static const std::regex s_range("an integer from (-?[0-9]+) to ([0-9]+)(, or auto)?");
    std::smatch range;
    if (std::regex_match(expected, range, s_range))
    {
        const std::string number = Integer(range[1], range[2]);
        return range[3].matched ? AnyOf({number, Enum({"auto"})}) : number;
    }
    const Properties schemas = {
        // What a group of them holds becomes options, too.
        {"anything",
         AnyOf({R"({"type":"null"})", Ref("integer"), Ref("text"), Ref("rational"), Ref("encoderOptions")})},
        {"an integer", Ref("integer")},
        {"a string", Ref("text")},
        {"a group", Ref(key == Conf::IFormat::TAG_METADATA               ? "metadata"
                        : key == IFormatCodec::TAG_CODEC_OPTIONS_ANALYZE ? "decoderOptions"
                        : key == IFormatCodec::TAG_CODEC_OPTIONS_ENCODE  ? "encoderOptions"
                                                                         : "group")},
        {"a positive integer", Integer("1", "9223372036854775807")},
        {"a number from -1 on", AnyOf({Integer("-1", "9223372036854775807"), Ref("rational"),
                                       R"({"type":"string","pattern":"^([^-\u0000][^\u0000]*|-1)?$"})"})},
        {"an integer, one_pass or two_pass",
         AnyOf({Ref("integer"), Enum({IFormatCodec::TAG_ONE_PASS_MODE, IFormatCodec::TAG_TWO_PASS_MODE})})},
        {"four printable characters or an integer from 0 to 4294967295",
         AnyOf({Integer("0", "4294967295"), R"({"type":"string","pattern":"^[ -~]{4}$"})"})},
        {"tv or pc", Enum({"tv", "pc"})},
        {"the number of a pixel format", PixelFormatNumbers()},
        {"the name or the number of a pixel format, as YUV420P or 0",
         AnyOf({PixelFormatNumbers(), Enum(Media::NamesOfValues(key)), Ref("text")})},
        {"a positive rational as 30000/1001", Ref("rate")},
        {"a rate as [30000, 1001]", Ref("rate")},
    };
    for (const auto& [text, schema] : schemas)
    {
        if (text == expected)
        {
            return schema;
        }
    }
    const Texts names = Media::NamesOfValues(key);
    if (!names.empty())
    {
        return Enum(names);
    }
    // Which ones there are is asked of FFmpeg.
    if (expected.compare(0, 9, "FFmpeg's ") == 0)
    {
        return Ref("text");
    }
    throw std::logic_error("no schema for '" + expected + "', the value of '" + key + "'");
}

// clang-format off
Texts CodecsOf(const std::string& kind)
{
    const Texts video = {
#define ZELNOR_CODEC(name) Conf::IFormatCodecVideo::name,
#define ZELNOR_CODEC_AS(name, enumerator) Conf::IFormatCodecVideo::name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"
    };
    const Texts audio = {
#define ZELNOR_CODEC(name) Conf::IFormatCodecAudio::name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecAudio.def"
    };
    const Texts subtitle = {
#define ZELNOR_CODEC(name) Conf::IFormatCodecSubtitle::name,
#include "Conf/Interfaces/Vocabulary/IFormatCodecSubtitle.def"
    };
    return kind == "video" ? video : kind == "audio" ? audio : subtitle;
}
// clang-format on

/// What all documents are made of.
Properties CommonDefinitions()
{
    const std::string integer = Ref("integer");
    const std::string text = Ref("text");
    const std::string rational = Ref("rational");
    const auto group = [](const std::string& names, const std::string& values) {
        return Group(R"({"type":"object",)" + names + "\"additionalProperties\":" + values + "}");
    };
    return {
        {"integer", Integer("-9223372036854775808", "9223372036854775807")},
        {"text", R"({"type":"string","pattern":"^[^\u0000]*$"})"},
        {"rational", R"({"type":"array","prefixItems":[)" + integer +
                         R"(,{"$ref":"#/$defs/integer","not":{"const":0}}],)"
                         R"("minItems":2,"maxItems":2})"},
        {"rate", R"({"type":"array","minItems":2,"maxItems":2,"items":{"type":"integer","not":{"const":0},)"
                 R"("minimum":-9223372036854775808,"maximum":9223372036854775807}})"},
        {"value", AnyOf({R"({"type":"null"})", integer, R"({"type":"string"})", rational, Ref("group")})},
        {"setting", AnyOf({R"({"type":"null"})", integer, text, rational, Ref("group")})},
        {"group", group("", Ref("value"))},
        {"record", Single(Ref("value"))},
        {"metadata", group(R"("propertyNames":{"pattern":"^[^=\u0000]+$"},)", Ref("setting"))},
        {"encoderOptions", group("", AnyOf({integer, text, rational}))},
        {"decoderOptions", group("", AnyOf({integer, text}))},
    };
}

Properties JobSettings(const std::string& kind)
{
    Properties settings;
    for (const std::string& key : Media::KnownSettings())
    {
        settings.emplace_back(key, key == IFormatCodec::TAG_CODEC_ID
                                       ? Enum(CodecsOf(kind))
                                       : SchemaOf(key, Media::ExpectedOfSetting(key)));
    }
    return settings;
}

/// A codec's record of a job. Of a stream that is copied, only some settings count.
std::string JobCodec(const std::string& kind)
{
    using Conf::IFormatCodecAudio;
    using Conf::IFormatCodecVideo;
    Properties copied;
    for (const std::string& key : Media::KnownSettings())
    {
        if (Media::IsSettingForCopies(key))
        {
            copied.emplace_back(key, SchemaOf(key, Media::ExpectedOfSetting(key)));
        }
    }
    const Texts geometry = {IFormatCodecVideo::TAG_WIDTH, IFormatCodecVideo::TAG_HEIGHT,
                            IFormatCodecVideo::TAG_ASPECTX, IFormatCodecVideo::TAG_ASPECTY};
    Properties together;
    for (const std::string& key : geometry)
    {
        together.emplace_back(key, List(QuotedAll(geometry)));
    }
    const std::string isCopied =
        AnyOf({Object({{IFormatCodec::TAG_LOSSLESS, R"({"type":"integer","not":{"const":0}})"}}, "true",
                      {IFormatCodec::TAG_LOSSLESS}),
               Object({{IFormatCodec::TAG_PREFERREDIMPL,
                        Enum({IFormatCodecVideo::ENCODER_LOSSLESS, IFormatCodecAudio::ENCODER_LOSSLESS})}},
                      "true", {IFormatCodec::TAG_PREFERREDIMPL})});
    const std::string encoded = Object(JobSettings(kind), "false", {IFormatCodec::TAG_CODEC_ID},
                                       ",\"dependentRequired\":" + Members(together));
    return Group("{\"if\":" + isCopied + ",\"then\":" + Object(copied, Ref("value")) +
                 ",\"else\":" + encoded + "}");
}

std::string Node()
{
    const std::string text = Ref("text");
    const std::string index = Integer("0", "2147483647");
    const std::string time = Integer("0", "1000000000000000");
    const std::string source =
        Group(Object({{IPreset::KEY_TYPE_ID, Enum({ITranscodingMetaGraph::KEY_SOURCE_TYPE_FILE})},
                      {ITranscodingMetaGraph::KEY_FILEPATH, text},
                      {IFormatFile::TAG_ENCRYPTION, text},
                      {Media::JobKeys::kLeftOut, ListOf(index)}},
                     Ref("value"), {IPreset::KEY_TYPE_ID, ITranscodingMetaGraph::KEY_FILEPATH}));
    const std::string merged = Group(
        Object({{ITranscodingMetaGraph::MERGE_WITH, index},
                {ITranscodingMetaGraph::MERGE_SETTINGS,
                 AnyOf({R"({"type":"object","maxProperties":0})", R"({"type":"array","maxItems":0})"})}},
               Ref("value"), {ITranscodingMetaGraph::MERGE_WITH}));
    const std::string stream =
        Group(Object({{ITranscodingMetaGraph::KEY_STREAM_RAW_ID, index},
                      {ITranscodingMetaGraph::KEY_DECODER, Enum({IFormatCodec::DECODER_FFMPEG_IMPL})},
                      {ITranscodingMetaGraph::MERGE_WITH, ListOf(merged)}},
                     Ref("value"), {ITranscodingMetaGraph::KEY_STREAM_RAW_ID}));
    const std::string chapter = Group(
        Object({{Media::JobKeys::kStart, time}, {Media::JobKeys::kEnd, time}, {Media::JobKeys::kTitle, text}},
               Ref("value"), {Media::JobKeys::kStart, Media::JobKeys::kEnd}));
    const std::string target =
        Group(Object({{IFormatFile::TAG_CONTAINER, Enum(Conf::GetContainerList())},
                      {ITranscodingMetaGraph::KEY_FILEPATH, R"({"type":"string","pattern":"^[^\u0000]+$"})"},
                      {Conf::IFormat::TAG_METADATA, Ref("metadata")},
                      {Media::JobKeys::kStart, time},
                      {Media::JobKeys::kEnd, time},
                      {Media::JobKeys::kChapters, ListOf(chapter)},
                      {Media::JobKeys::kAttachments, ListOf(index)}},
                     Ref("value"), {IFormatFile::TAG_CONTAINER, ITranscodingMetaGraph::KEY_FILEPATH}));
    // A target's record has any name.
    const std::string record =
        Object({{ITranscodingMetaGraph::KEY_SOURCE, source}, {ITranscodingMetaGraph::KEY_STREAM_RAW, stream}},
               target, {}, R"(,"minProperties":1,"maxProperties":1)");
    return Object({{"id", Ref("integer")}, {"data", Single(Group(record))}}, "false", {"id", "data"});
}

std::string Link()
{
    const std::string record = Object({{"format_codec_video", JobCodec("video")},
                                       {"format_codec_audio", JobCodec("audio")},
                                       {"format_codec_subtitle", JobCodec("subtitle")}},
                                      "false", {}, R"(,"minProperties":1,"maxProperties":1)");
    return Object({{"id", Ref("integer")},
                   {"from", Ref("integer")},
                   {"to", Ref("integer")},
                   {"data", AnyOf({R"({"type":"null"})", Single(Group(record))})}},
                  "false", {"from", "to"});
}

std::string JobSchema()
{
    Properties definitions = CommonDefinitions();
    definitions.emplace_back("node", Node());
    definitions.emplace_back("link", Link());
    return Object({{"$schema", "true"},
                   {"vertices", R"({"type":"array","minItems":2,"items":{"$ref":"#/$defs/node"}})"},
                   {"edges", R"({"type":"array","minItems":1,"items":{"$ref":"#/$defs/link"}})"}},
                  "false", {"vertices", "edges"}, ",\"$defs\":" + Members(definitions));
}

std::string PresetStream(const std::string& kind)
{
    Properties settings;
    for (const std::string& key : Media::KnownSettings())
    {
        Texts schemas;
        for (const auto& [known, expected] : Media::ExpectedInStream())
        {
            if (known == key)
            {
                schemas.push_back(SchemaOf(key, expected));
            }
        }
        // A name of a pixel format stands for its number.
        if (key != Conf::TAG_PIX_FMT)
        {
            schemas.push_back(SchemaOf(key, Media::ExpectedOfSetting(key)));
        }
        settings.emplace_back(key, key == IFormatCodec::TAG_CODEC_ID ? Enum(CodecsOf(kind))
                                   : schemas.size() == 1             ? schemas.front()
                                                                     : AllOf(schemas));
    }
    return Group(Object(settings, "false", {IFormatCodec::TAG_CODEC_ID}));
}

std::string PresetSchema()
{
    const Properties streams = {{IPreset::STREAM_TYPE_VIDEO, Ref("video")},
                                {IPreset::STREAM_TYPE_AUDIO, Ref("audio")},
                                {IPreset::STREAM_TYPE_SUBTITLES_VIDEO, Ref("subtitle")},
                                {IPreset::STREAM_TYPE_SUBTITLES_TEXT, Ref("subtitle")}};
    const std::string list =
        AnyOf({Object(streams, "false", {}, ",\"minProperties\":1"),
               R"({"type":"array","minItems":1,"items":)" +
                   Object(streams, "false", {}, R"(,"minProperties":1,"maxProperties":1)") + "}"});
    Properties keys;
    for (const std::string& key : Media::KnownPresetKeys())
    {
        std::string schema = key == IPreset::KEY_STREAMS ? list : Ref("value");
        for (const auto& [known, expected] : Media::ExpectedInPreset())
        {
            // A text of these is not given to a program.
            schema = known != key             ? schema
                     : expected == "a string" ? R"({"type":"string"})"
                                              : SchemaOf(key, expected);
        }
        keys.emplace_back(key, schema);
    }
    Properties definitions = CommonDefinitions();
    for (const char* const kind : {"video", "audio", "subtitle"})
    {
        definitions.emplace_back(kind, PresetStream(kind));
    }
    definitions.emplace_back(
        "preset", Group(Object(keys, "false", {IFormatFile::TAG_CONTAINER, IPreset::KEY_STREAMS})));
    return R"({"type":"object","anyOf":[)" + Single(Ref("preset")) + "," +
           R"({"minProperties":2,"maxProperties":2,"required":["$schema"],"properties":{"$schema":true},)" +
           "\"additionalProperties\":" + Ref("preset") + "}],\"$defs\":" + Members(definitions) + "}";
}

int Write(const std::string& kind)
{
    const std::string schema = kind == "job" ? JobSchema() : PresetSchema();
    const std::string text = R"({"$schema":"https://json-schema.org/draft/2020-12/schema","title":)" +
                             Quoted(kind == "job" ? "A transcoding job" : "A preset") + "," +
                             schema.substr(1);
    rapidjson::Document document;
    if (document.Parse(text.data(), text.size()).HasParseError())
    {
        throw std::logic_error("not JSON: " + text.substr(document.GetErrorOffset(), 200));
    }
    rapidjson::StringBuffer buffer;
    rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
    writer.SetIndent(' ', 1);
    writer.SetFormatOptions(rapidjson::kFormatSingleLineArray);
    document.Accept(writer);
    std::puts(buffer.GetString());
    return 0;
}

} // namespace

} // namespace Zelnor::Docs

int main(int argc, char** argv)
{
    const std::string kind = argc == 2 ? argv[1] : "";
    if (kind != "job" && kind != "preset")
    {
        std::fputs("expected job or preset\n", stderr);
        return 2;
    }
    return Zelnor::Docs::Write(kind);
}
