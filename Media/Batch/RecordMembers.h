#pragma once

// Private to the library, not installed.

#include "Media/Place.h"

#include "Core/Interfaces/Property.h"

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace Zelnor::Media
{

/// A record of which it is known what it may hold. What is not of that is refused, with its place.
class RecordMembers
{
public:
    /// \throw JobException when it is not a group, or has a member that is not known, or one twice
    RecordMembers(const Core::Property& record, const Place& place, std::initializer_list<const char*> known);

    Place At(const std::string& key) const;
    bool Has(const std::string& key) const { return m_record.ChildExists(key); }
    // \throw JobException when the member is missing or has another type
    std::string Text(const std::string& key) const;
    std::int64_t Integer(const std::string& key, std::int64_t least, std::int64_t most) const;
    const Core::Property& Group(const std::string& key) const;
    /// The texts of a group that names them "1", "2", ...; none when it is missing.
    std::vector<std::string> Texts(const std::string& key) const;
    /// The position of the text in the list.
    std::size_t Choice(const std::string& key, const std::vector<std::string>& words) const;

private:
    const Core::Property& Member(const std::string& key, PropertyTypes type) const;

    const Core::Property& m_record;
    Place m_place;
};

/// Reads the record that the text holds. \throw JobException
/// \param name  the record's
Core::Property ParseRecord(const std::string& text, const std::string& file, const std::string& name);
/// The text of a record, indented for people.
std::string RecordDocument(const Core::Property& record);

/// Adds a group that names the texts "1", "2", ...; nothing when there are none.
void SetTexts(Core::Property& record, const std::string& key, const std::vector<std::string>& texts);

/// "000012": numbers of jobs in names, so that their order is that of the names.
std::string NumberText(std::size_t number);

} // namespace Zelnor::Media
