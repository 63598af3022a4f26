// GStreamer's structures: a record each, in GStreamer's own text.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <gst/gst.h>

#include <memory>

namespace Zelnor::Benchmarks
{
namespace
{

struct Free
{
    void operator()(GstStructure* structure) const { gst_structure_free(structure); }
    void operator()(char* text) const { g_free(text); }
};
using Structure = std::unique_ptr<GstStructure, Free>;
using Text = std::unique_ptr<char, Free>;

/// A field's name that GStreamer's text can hold.
std::string NameOf(const Field& field)
{
    std::string name = field.name;
    for (char& c : name)
    {
        c = c == '$' ? 'T' : c;
    }
    return name;
}

/// GStreamer asks for the library once.
const std::vector<Field>& Fields()
{
    static const std::vector<Field> fields = [] {
        gst_init(nullptr, nullptr);
        std::vector<Field> renamed = GetNodeFields();
        for (Field& field : renamed)
        {
            field.name = NameOf(field);
        }
        return renamed;
    }();
    return fields;
}

Structure MakeStructure(const char* name, const std::vector<Field>& fields)
{
    Structure structure(gst_structure_new_empty(name));
    for (const Field& field : fields)
    {
        const char* const key = field.name.c_str();
        switch (field.kind)
        {
        case Field::TEXT:
            gst_structure_set(structure.get(), key, G_TYPE_STRING, field.text.c_str(), nullptr);
            break;
        case Field::NUMBER:
            gst_structure_set(structure.get(), key, G_TYPE_INT64, static_cast<gint64>(field.number), nullptr);
            break;
        case Field::RATIO:
            gst_structure_set(structure.get(), key, GST_TYPE_FRACTION, static_cast<int>(field.number),
                              static_cast<int>(field.denominator), nullptr);
            break;
        case Field::GROUP: {
            GValue value = G_VALUE_INIT;
            g_value_init(&value, GST_TYPE_STRUCTURE);
            g_value_take_boxed(&value, MakeStructure(key, field.members).release());
            gst_structure_take_value(structure.get(), key, &value);
            break;
        }
        }
    }
    return structure;
}

Structure MakeRecord() { return MakeStructure("stream", Fields()); }

Structure MakeLink()
{
    return Structure(gst_structure_new("format_codec_video", "codec", G_TYPE_STRING, "CODEC_ID_MPEG4",
                                       "bitrate", G_TYPE_INT64, static_cast<gint64>(4'000'000), nullptr));
}

std::vector<Structure> MakeRecords(long long nodes)
{
    std::vector<Structure> records;
    for (long long i = 0; i < nodes; ++i)
    {
        records.push_back(MakeRecord());
    }
    const std::size_t links = MakeLinks(nodes).size();
    for (std::size_t i = 0; i < links; ++i)
    {
        records.push_back(MakeLink());
    }
    return records;
}

Text Serialize(const Structure& structure)
{
    return Text(gst_structure_serialize(structure.get(), GST_SERIALIZE_FLAG_NONE));
}

void Load(benchmark::State& state)
{
    std::vector<Text> texts;
    for (const Structure& record : MakeRecords(state.range(0)))
    {
        texts.push_back(Serialize(record));
    }
    Measure(state, [&] {
        std::vector<Structure> records;
        records.reserve(texts.size());
        for (const Text& text : texts)
        {
            records.emplace_back(gst_structure_from_string(text.get(), nullptr));
        }
        return records;
    });
}
BENCHMARK(Load)->Name("Load/GstStructure")->Apply(OfDocuments);

void Save(benchmark::State& state)
{
    const std::vector<Structure> records = MakeRecords(state.range(0));
    Measure(state, [&] {
        std::string document;
        for (const Structure& record : records)
        {
            document += Serialize(record).get();
        }
        return document;
    });
}
BENCHMARK(Save)->Name("Save/GstStructure")->Apply(OfDocuments);

void BuildRecord(benchmark::State& state)
{
    Fields();
    Measure(state, MakeRecord);
}
BENCHMARK(BuildRecord)->Name("BuildRecord/GstStructure");

void CopyRecord(benchmark::State& state)
{
    const Structure record = MakeRecord();
    Measure(state, [&] { return Structure(gst_structure_copy(record.get())); });
}
BENCHMARK(CopyRecord)->Name("CopyRecord/GstStructure");

void CompareRecords(benchmark::State& state)
{
    const Structure left = MakeRecord();
    const Structure right = MakeRecord();
    Measure(state, [&] { return gst_structure_is_equal(left.get(), right.get()); });
}
BENCHMARK(CompareRecords)->Name("CompareRecords/GstStructure");

void FindProperty(benchmark::State& state)
{
    const Structure record = MakeRecord();
    MeasureEach(state, Fields(), [&](const Field& field) {
        return gst_structure_get_value(record.get(), field.name.c_str());
    });
}
BENCHMARK(FindProperty)->Name("FindProperty/GstStructure");

} // namespace
} // namespace Zelnor::Benchmarks
