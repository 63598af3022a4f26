#pragma once

#include "Core/Interfaces/Export.h"

namespace Zelnor
{

/// An object that lives as long as there are references to it. A class's static `Create()` makes an object
/// and returns the first reference in a `boost::intrusive_ptr`. The last `Release()` deletes the object;
/// never delete it directly.
class ZELNOR_API IRefCountable
{
public:
    virtual ~IRefCountable();

    /// Adds a reference and returns the new count.
    virtual int AddRef() const = 0;
    /// The current number of references.
    virtual int GetRefCount() const = 0;
    /// Removes a reference and returns the new count. At 0 the object has been deleted.
    virtual int Release() const = 0;

protected:
    IRefCountable() = default;
    IRefCountable(const IRefCountable&) = default;            ///< a copy counts its own references
    IRefCountable& operator=(const IRefCountable&) = default; ///< the count stays
};

/// The functions with which `boost::intrusive_ptr` counts.
ZELNOR_API void intrusive_ptr_add_ref(const IRefCountable* object);
ZELNOR_API void intrusive_ptr_release(const IRefCountable* object);

} // namespace Zelnor
