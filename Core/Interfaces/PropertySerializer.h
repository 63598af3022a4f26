#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/JsonMemory.h"
#include "Core/Interfaces/Property.h"

#include <rapidjson/fwd.h>

namespace Zelnor::Core
{

class PropertyReader;

/// Converts records to and from JSON. A record is an object with one member, its name and its value:
///
/// - a 64-bit integer is an integer,
/// - a string is a string, byte for byte,
/// - a rational is `[n, d]`,
/// - a property without a value is `null`,
/// - a group whose children have distinct names is an object with one member a child, in order,
/// - a group in which a name occurs twice is an array of records, in order.
///
/// `Load` also accepts an object with repeated keys, an array of records with different names, and `[]`.
/// Groups may be nested 512 deep, including the outermost one. Running out of memory is `std::bad_alloc`, and
/// what was to be changed stays as it was.
class ZELNOR_API PropertySerializer
{
public:
    static constexpr int kMaxDepth = 512; ///< of nested groups, the outermost one included

    /// Replaces `property`, including its name, by the record that `json` holds. JSON null makes it an empty
    /// group with its old name. \throw PropertyException when `json` is not of the form above; the
    /// description starts with the path
    ///   of the place ("data.source.bitrate: ...", "inputs[2].bitrate: ..."), in which names are cut after
    ///   256 bytes. `property` stays as it was.
    static void Load(Property& property, rapidjson::Value& json);
    static void Load(Property& property, const JsonValue& json);
    /// The same for the record that `reader` has read, which begins anew. Precondition: it is complete.
    static void Load(Property& property, PropertyReader& reader);
    /// The same for a record that may stand in a group of its own: of a group with children `property`
    /// becomes the first child.
    static void LoadUnwrapped(Property& property, PropertyReader& reader);

    /// Writes the record of `property` to `json`; strings are copied into `allocator`.
    /// \throw PropertyException when `Load` would not accept the result, with the same description; `json`
    /// stays as
    ///   it was.
    static void Save(const Property& property, rapidjson::Value& json,
                     rapidjson::MemoryPoolAllocator<rapidjson::CrtAllocator>& allocator);
};

} // namespace Zelnor::Core
