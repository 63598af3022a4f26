#pragma once

#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertySerializer.h"

#include <rapidjson/rapidjson.h>

#include <initializer_list>
#include <string>
#include <string_view>

namespace Zelnor::Core
{

/// Whether all children of `group` have different names, so that it can be written as a JSON object. Takes
/// time linear in the number of children.
ZELNOR_API bool HasDistinctNames(const Property& group);

/// Says why `record`, wrapped in groups named `wrappers` (the outermost first), could not be loaded again:
/// "data.source.metadata: groups are nested deeper than 512". Empty if it could.
ZELNOR_API std::string GetSaveRefusal(const Property& record,
                                      std::initializer_list<std::string_view> wrappers = {});

/// Checks that `record`, wrapped in that many groups, is not nested deeper than `PropertySerializer` accepts.
/// \throw PropertyException as `PropertySerializer::Save`
ZELNOR_API void CheckDepth(const Property& record, int wrappers);

/// Sends records to a RapidJSON handler (a writer, or a document that is being populated) as a stream of
/// events, in the form that `PropertySerializer` describes. No intermediate document is built.
///
/// Recurses once for each nested group: call `CheckDepth` first.
template <class Handler>
class PropertyEvents
{
public:
    /// \param copyStrings  whether the handler copies strings; if not, the records must outlive its result
    PropertyEvents(Handler& handler, bool copyStrings) : m_handler(handler), m_copyStrings(copyStrings) {}

    /// Sends the record as an object with one member.
    void Record(const Property& property)
    {
        m_handler.StartObject();
        Member(property);
        m_handler.EndObject(1);
    }

    /// Sends the record's name and value as a member of an object that the caller has started.
    void Member(const Property& property)
    {
        const std::string& name = property.GetName();
        m_handler.Key(name.data(), Length(name.size()), m_copyStrings);
        Value(property);
    }

private:
    static rapidjson::SizeType Length(std::size_t size) { return static_cast<rapidjson::SizeType>(size); }

    void Value(const Property& property)
    {
        switch (property.GetType())
        {
        case PROPERTY_TYPE_NONE:
            m_handler.Null();
            break;
        case PROPERTY_TYPE_INT64:
            m_handler.Int64(property.GetInt64());
            break;
        case PROPERTY_TYPE_STRING: {
            const std::string& text = property.GetString();
            m_handler.String(text.data(), Length(text.size()), m_copyStrings);
            break;
        }
        case PROPERTY_TYPE_RATIO:
            m_handler.StartArray();
            m_handler.Int64(property.GetRatio().numerator());
            m_handler.Int64(property.GetRatio().denominator());
            m_handler.EndArray(2);
            break;
        case PROPERTY_TYPE_GROUP:
            Group(property);
            break;
        }
    }

    void Group(const Property& group)
    {
        if (HasDistinctNames(group))
        {
            m_handler.StartObject();
            for (const Property& child : group)
            {
                Member(child);
            }
            m_handler.EndObject(Length(group.Count()));
            return;
        }
        m_handler.StartArray();
        for (const Property& child : group)
        {
            Record(child);
        }
        m_handler.EndArray(Length(group.Count()));
    }

    Handler& m_handler;
    bool m_copyStrings;
};

} // namespace Zelnor::Core
