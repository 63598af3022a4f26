#pragma once

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <utility>

namespace Zelnor::Conf
{

/// Sets all of `values` in `record`, each as `SetChildT` would, or none: when one cannot be added, the record
/// stays as it was. References to what else the record holds stay valid.
template <std::size_t N>
void SetChildren(Core::Property& record, Core::Property (&&values)[N])
{
    // Only adding can fail, so what is missing is added first, and taken away again when the rest does not
    // fit.
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
