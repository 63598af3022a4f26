// Private to the Python package.
#pragma once

#include "Core/Interfaces/Property.h"

#include <pybind11/pybind11.h>

namespace Zelnor::Python
{

namespace py = pybind11;

/// The class `zelnor.Record`.
py::object RecordClass();
/// A copy of the record and everything in it. Raises `TypeError`, `OverflowError` or `ValueError` for what no
/// record of the library can hold; a class derived in Python may have put anything there.
Core::Property ToProperty(py::handle record);
/// A new `zelnor.Record`.
py::object ToRecord(const Core::Property& property);

void BindRecords(py::module_& module);

} // namespace Zelnor::Python

namespace pybind11::detail
{

template <>
struct type_caster<Zelnor::Core::Property>
{
    PYBIND11_TYPE_CASTER(Zelnor::Core::Property, const_name("zelnor.Record"));

    bool load(handle source, bool)
    {
        if (!isinstance(source, Zelnor::Python::RecordClass()))
        {
            return false;
        }
        value = Zelnor::Python::ToProperty(source);
        return true;
    }
    static handle cast(const Zelnor::Core::Property& property, return_value_policy, handle)
    {
        return Zelnor::Python::ToRecord(property).release();
    }
};

} // namespace pybind11::detail
