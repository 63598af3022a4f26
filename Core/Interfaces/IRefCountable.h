#pragma once

#include "Core/Interfaces/Export.h"

namespace Zelnor
{

/// An object that lives as long as somebody holds a reference to it. Objects come from their class's static
/// `Create()`, which hands out one reference in a `boost::intrusive_ptr`; the last `Release()` deletes them,
/// and nobody else may.
class ZELNOR_API IRefCountable
{
public:
    virtual ~IRefCountable();

    /// Takes one more reference and returns the new count.
    virtual int AddRef() const = 0;
    /// The number of references held now.
    virtual int GetRefCount() const = 0;
    /// Drops a reference and returns the new count; at 0 the object is gone.
    virtual int Release() const = 0;

protected:
    IRefCountable() = default;
    IRefCountable(const IRefCountable&) = default;
    IRefCountable& operator=(const IRefCountable&) = default;
};

/// The two calls through which `boost::intrusive_ptr` counts.
ZELNOR_API void intrusive_ptr_add_ref(const IRefCountable* object);
ZELNOR_API void intrusive_ptr_release(const IRefCountable* object);

} // namespace Zelnor
