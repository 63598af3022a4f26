#pragma once

// Private to the library, not installed.

#include "Core/Interfaces/Property.h"

#include <string>

namespace Zelnor::Media
{

/// A value in one line, as HTML: 25, "mp4", 30000/1001, null, "empty group", "group of 3".
std::string ValueHtml(const Core::Property& value);

/// Whether the record is what a node or link without a record has.
bool IsNoRecord(const Core::Property& record);

/// The record's children as a tree of names and values, as HTML; its value when it is not a group. Linear in
/// the size of the record: groups that are nested deep stand in one list, each with the number of its level.
std::string RecordTreeHtml(const Core::Property& record);

} // namespace Zelnor::Media
