#pragma once

#include <rapidjson/document.h>

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// Changes a JSON document so that it stays JSON (but for bytes that are not UTF-8): keys renamed, repeated
/// and dropped, values of other kinds and at the limits of their kind, groups nested deeply, very long texts.
class JsonMutator
{
public:
    /// \param documents  what keys and values are taken from; each must be JSON
    JsonMutator(const std::vector<std::string>& documents, std::uint64_t seed);

    /// One of the documents with one to four changes.
    std::string Next();

private:
    using Allocator = rapidjson::Document::AllocatorType;

    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    /// Fills `m_places` with all values of the document.
    void Collect(rapidjson::Value& value);
    void ChangeOne(rapidjson::Value& value, Allocator& allocator);
    void ChangeObject(rapidjson::Value& object, Allocator& allocator);
    void ChangeArray(rapidjson::Value& array, Allocator& allocator);
    rapidjson::Value AnyValue(Allocator& allocator);
    rapidjson::Value AnyText(Allocator& allocator);
    rapidjson::Value AnyKey(Allocator& allocator);
    rapidjson::Value Nested(std::size_t depth, Allocator& allocator);

    std::vector<std::string> m_documents;
    std::vector<std::string> m_keys;
    std::mt19937_64 m_random;
    std::vector<rapidjson::Value*> m_places;
};

} // namespace Zelnor::Testing
