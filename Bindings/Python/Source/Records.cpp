#include "Bindings/Python/Source/Records.h"
#include "Bindings/Python/Source/Arguments.h"

#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Interfaces/PropertyEvents.h"
#include "Core/Interfaces/PropertyReader.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <sstream>

namespace Zelnor::Python
{

namespace
{

/// What a record holds in Python: its attributes `_name` and `_value`.
class RecordReader
{
public:
    RecordReader() : m_record(RecordClass()), m_fraction(py::module_::import("fractions").attr("Fraction")) {}

    Core::Property Read(py::handle record, int depth) const
    {
        const py::object name = record.attr("_name");
        if (PyUnicode_Check(name.ptr()) == 0)
        {
            throw py::type_error("the name of a record is a str");
        }
        const std::string bytes = BytesOf(name);
        const py::object value = record.attr("_value");
        if (value.is_none())
        {
            return Core::Property::None(bytes);
        }
        if (PyUnicode_Check(value.ptr()) != 0)
        {
            return Core::Property(bytes, BytesOf(value));
        }
        if (py::isinstance(value, m_fraction))
        {
            return Core::Property(bytes, Ratio(value));
        }
        if (PyList_Check(value.ptr()) != 0)
        {
            return Group(bytes, py::reinterpret_borrow<py::list>(value), depth);
        }
        long long number = 0;
        if (!LoadInteger(value, number))
        {
            throw py::type_error("a record holds an int, a str, a Fraction, None or a group");
        }
        return Core::Property(bytes, number);
    }

private:
    Core::Property::Ratio Ratio(py::handle fraction) const
    {
        long long numerator = 0;
        long long denominator = 0;
        if (!LoadInteger(fraction.attr("numerator"), numerator) ||
            !LoadInteger(fraction.attr("denominator"), denominator) || denominator <= 0)
        {
            throw py::type_error("a fraction has an integer and a positive integer");
        }
        return {numerator, denominator};
    }

    Core::Property Group(const std::string& name, const py::list& children, int depth) const
    {
        if (depth == Core::PropertySerializer::kMaxDepth)
        {
            throw py::value_error("groups are nested deeper than " + std::to_string(depth));
        }
        Core::Property group(name);
        // By position: what reading a child calls may change the list.
        for (std::size_t i = 0; i < children.size(); ++i)
        {
            const py::object child = children[i];
            if (!py::isinstance(child, m_record))
            {
                throw py::type_error("the children of a group are records");
            }
            group.Add(Read(child, depth + 1));
        }
        return group;
    }

    py::object m_record;
    py::object m_fraction;
};

py::object PythonValueOf(const Core::Property& property, const py::object& make, const py::object& fraction)
{
    switch (property.GetType())
    {
    case PROPERTY_TYPE_NONE:
        break;
    case PROPERTY_TYPE_INT64:
        return py::int_(property.GetInt64());
    case PROPERTY_TYPE_STRING:
        return ToPython(property.GetString());
    case PROPERTY_TYPE_RATIO:
        return fraction(property.GetRatio().numerator(), property.GetRatio().denominator());
    case PROPERTY_TYPE_GROUP: {
        py::list children;
        for (const Core::Property& child : property)
        {
            children.append(make(ToPython(child.GetName()), PythonValueOf(child, make, fraction)));
        }
        return std::move(children);
    }
    }
    return py::none();
}

Text ToJson(const Core::Property& record)
{
    // Refuses what could not be read again.
    Core::CheckDepth(record, 0);
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    Core::PropertyEvents events(writer, true);
    events.Record(record);
    return {std::string(buffer.GetString(), buffer.GetSize())};
}

Core::Property FromJson(const Text& text)
{
    Core::PropertyReader events;
    rapidjson::Reader reader;
    rapidjson::MemoryStream stream(text.bytes.data(), text.bytes.size());
    constexpr unsigned kFlags = rapidjson::kParseIterativeFlag | rapidjson::kParseStopWhenDoneFlag;
    const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, events);
    const bool isWhole =
        !result.IsError() && text.bytes.find_first_not_of(" \t\r\n", stream.Tell()) == std::string::npos;
    if (!isWhole)
    {
        throw py::value_error("the text is not JSON, from byte " +
                              std::to_string(result.IsError() ? result.Offset() : stream.Tell()));
    }
    // The library would make an empty record of it.
    if (text.bytes[text.bytes.find_first_not_of(" \t\r\n")] == 'n')
    {
        throw py::value_error("expected a record (an object with one member), found null");
    }
    Core::Property record;
    Core::PropertySerializer::Load(record, events);
    return record;
}

Text Dump(const Core::Property& record)
{
    std::ostringstream text;
    Core::PrintPropertyValue(record, 0, text, true, true);
    return {text.str()};
}

} // namespace

py::object RecordClass() { return py::module_::import("zelnor._record").attr("Record"); }

Core::Property ToProperty(py::handle record) { return RecordReader().Read(record, 0); }

py::object ToRecord(const Core::Property& property)
{
    const py::object make = RecordClass().attr("_make");
    const py::object fraction = py::module_::import("fractions").attr("Fraction");
    return make(ToPython(property.GetName()), PythonValueOf(property, make, fraction));
}

void BindRecords(py::module_& module)
{
    module.def("_record_to_json", &ToJson, py::arg("record"));
    module.def("_record_from_json", &FromJson, py::arg("text"));
    module.def("_record_dump", &Dump, py::arg("record"));
}

} // namespace Zelnor::Python
