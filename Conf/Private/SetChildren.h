#pragma once

// Private to the library, not installed: changes of several values of a record at once.

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <utility>

namespace Zelnor::Conf
{

/// Sets all of `values` in `record`, each as `SetChildT` does, or none of them: if one cannot be added, the
/// record stays as it was. References to other children stay valid.
template <std::size_t N>
void SetChildren(Core::Property& record, Core::Property (&&values)[N])
{
    // Only adding can fail, so missing children are added first, and removed again if one cannot be added.
    bool added[N] = {};
    try
    {
        for (std::size_t i = 0; i < N; ++i)
        {
            if (!record.ChildExists(values[i].GetName()))
            {
                record.SetChildT(values[i].GetName(), 0LL);
                added[i] = true;
            }
        }
    }
    catch (...)
    {
        for (std::size_t i = 0; i < N; ++i)
        {
            if (added[i])
            {
                record.RemoveChild(values[i].GetName());
            }
        }
        throw;
    }
    for (Core::Property& value : values)
    {
        *record.FindChild(value.GetName()) = std::move(value);
    }
}

} // namespace Zelnor::Conf
