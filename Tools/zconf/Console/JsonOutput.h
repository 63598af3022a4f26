#pragma once

#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"
#include "Tools/zconf/Console/VisibleJson.h"

#include "Core/Interfaces/JsonMemory.h"
#include "Core/Interfaces/JsonStream.h"
#include "Core/Interfaces/Property.h"
#include "Core/Interfaces/PropertyEvents.h"

#include <rapidjson/prettywriter.h>

#include <string>
#include <vector>

namespace Zelnor::Tool
{

/// Writes texts that are not UTF-8 in the form of `Utf8Text`, also those in records.
class JsonWriter : public rapidjson::PrettyWriter<Core::JsonZelnorStreamOut, rapidjson::UTF8<>, VisibleUtf8,
                                                  Core::JsonMemory>
{
public:
    using PrettyWriter::Key;
    using PrettyWriter::PrettyWriter;
    using PrettyWriter::String;

    bool Key(const char* text, rapidjson::SizeType length, bool copy = false)
    {
        return String(text, length, copy);
    }
    bool String(const char* text, rapidjson::SizeType length, bool copy = false)
    {
        const std::string shown = Utf8Text(std::string(text, length));
        return PrettyWriter::String(shown.data(), static_cast<rapidjson::SizeType>(shown.size()), copy);
    }
};

/// Writes one JSON document for scripts to standard output, indented so that people can read it too.
class JsonOutput
{
public:
    using Writer = JsonWriter;

    JsonOutput() : m_output(MakeStandardOutput()), m_stream(*m_output), m_writer(m_stream)
    {
        constexpr unsigned kIndent = 2;
        m_writer.SetIndent(' ', kIndent);
        m_writer.SetFormatOptions(rapidjson::kFormatSingleLineArray);
    }

    /// For objects and arrays; end what was begun.
    Writer& GetWriter() { return m_writer; }

    void Key(const std::string& key)
    {
        m_writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
    }
    void String(const std::string& text)
    {
        m_writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
    }
    void Integers(const std::vector<long long>& numbers)
    {
        m_writer.StartArray();
        for (const long long number : numbers)
        {
            m_writer.Int64(number);
        }
        m_writer.EndArray();
    }
    /// A record as an object with one member. It must not be nested deeper than a document's records may be.
    void Record(const Core::Property& record)
    {
        Core::PropertyEvents<Writer>(m_writer, false).Record(record);
    }

    /// The same as a member of an object that was begun.
    void Member(const Core::Property& record)
    {
        Core::PropertyEvents<Writer>(m_writer, false).Member(record);
    }

    /// Ends the document.
    void Finish()
    {
        m_stream.Put('\n');
        m_stream.Flush();
    }

private:
    boost::intrusive_ptr<Core::IDataOutput> m_output;
    Core::JsonZelnorStreamOut m_stream;
    Writer m_writer;
};

} // namespace Zelnor::Tool
