#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <rapidjson/rapidjson.h>

#include <cstdint>
#include <memory>

namespace Zelnor::Core
{

class JsonCursor;

/// Builds records from the events of a RapidJSON reader, in the form that `PropertySerializer` describes. No
/// intermediate document is built. The opposite of `PropertyEvents`.
/// \code
/// Core::PropertyReader record;
/// rapidjson::Reader reader;
/// reader.Parse<rapidjson::kParseIterativeFlag>(stream, record);
/// Core::Property property;
/// Core::PropertySerializer::Load(property, record);
/// \endcode
///
/// Every event returns true, also after something that is not of that form: which of several faults is
/// reported is known only at the end. Nothing recurses, whatever the document nests. Running out of memory is
/// `std::bad_alloc`; after it the reader can only be destroyed. Taking the record makes it ready for another.
class ZELNOR_API PropertyReader
{
public:
    PropertyReader();
    ~PropertyReader();
    PropertyReader(const PropertyReader&) = delete;
    PropertyReader& operator=(const PropertyReader&) = delete;
    /// The events of a RapidJSON reader.
    bool Null();
    bool Bool(bool value);
    bool Int(int value) { return Int64(value); }
    bool Uint(unsigned value) { return Int64(value); }
    bool Int64(std::int64_t value);
    bool Uint64(std::uint64_t value);
    bool Double(double value);
    /// The same. \param copy  if not, `text` must stay until the record has been taken. So for keys.
    bool String(const char* text, rapidjson::SizeType length, bool copy);
    bool StartObject();
    bool Key(const char* text, rapidjson::SizeType length, bool copy);
    bool EndObject(rapidjson::SizeType members);
    bool StartArray();
    bool EndArray(rapidjson::SizeType elements);
    /// Numbers come as text only from a reader that was asked for that.
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return Double(0); }

    /// Whether the events of one value, from its first to its last, have come.
    bool IsComplete() const;

private:
    friend class PropertySerializer;
    friend ZELNOR_API bool ParseRecord(JsonCursor& cursor, PropertyReader& record);
    class Impl;

    std::unique_ptr<Impl> m_impl;
};

} // namespace Zelnor::Core
