#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <rapidjson/document.h>

namespace Zelnor::Core
{

/// Converts records from and to JSON. A record is an object with one member, its name and its value:
///
/// - a 64-bit integer is an integer,
/// - a string is a string, byte for byte,
/// - a rational is `[n, d]`,
/// - a property without a value is `null`,
/// - a group whose children have distinct names is an object with one member a child, in order,
/// - a group in which a name repeats is an array of records, in order.
///
/// Reading also takes an object with repeated keys, an array of records whose names differ, and `[]`. Groups
/// may be nested 512 deep, the outermost one included.
class ZELNOR_API PropertySerializer
{
public:
    static constexpr int kMaxDepth = 512;

    /// Makes `property` the record that `json` holds, name included. JSON null makes it an empty group under
    /// its own name.
    /// \throw PropertyException when `json` is not of the form above; the description begins with the way to
    ///   the place ("data.source.bitrate: ...", "inputs[2].bitrate: ..."), in which the first 256 bytes of a
    ///   longer name stand for it. `property` stays as it was.
    static void Load(Property& property, rapidjson::Value& json);

    /// Makes `json` the record of `property`; strings are copied into `allocator`.
    /// \throw PropertyException when `Load` would refuse the result, with the same description; `json` stays as
    ///   it was.
    static void Save(const Property& property, rapidjson::Value& json,
                     rapidjson::Document::AllocatorType& allocator);
};

} // namespace Zelnor::Core
