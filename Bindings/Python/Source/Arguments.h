// Private to the Python package.
#pragma once

#include <pybind11/pybind11.h>

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// \file
/// What functions take and return where pybind11's own conversions would lose something or say too little:
/// texts of any bytes, paths, and integers that do not fit.

namespace Zelnor::Python
{

namespace py = pybind11;

/// A text of any bytes. Bytes that are not UTF-8 are surrogates in Python (PEP 383), so nothing is lost; a
/// text with any other surrogate is refused.
struct Text
{
    std::string bytes;
};

/// A path: a `str`, `bytes` or `os.PathLike` without NUL, in the encoding of the file system.
struct Path
{
    std::string bytes;
};

/// An integer; what does not fit raises `OverflowError`, and `True` and `False` are not integers.
template <class T>
struct Integer
{
    T value;
};

/// A number; an integer that is too large raises `OverflowError`.
struct Number
{
    double value;
};

std::string BytesOf(py::handle text);
std::string PathBytesOf(py::handle path);
py::str ToPython(const std::string& text);
py::list ToPython(const std::vector<std::string>& texts);
/// The same as a tuple, for values that do not change.
py::tuple ToTuple(const std::vector<std::string>& texts);

/// `None` for nothing.
template <class T>
py::object ToPython(const std::optional<T>& value)
{
    return value ? py::cast(*value) : py::object(py::none());
}

/// Whether `source` is an integer; `T` gets it.
template <class T>
bool LoadInteger(py::handle source, T& value)
{
    if (PyBool_Check(source.ptr()) || PyIndex_Check(source.ptr()) == 0)
    {
        return false;
    }
    const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(source.ptr()));
    if (!number)
    {
        throw py::error_already_set();
    }
    int overflow = 0;
    const long long loaded = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
    constexpr auto least = static_cast<long long>(std::numeric_limits<T>::min());
    constexpr auto most = static_cast<long long>(std::numeric_limits<T>::max());
    if (overflow != 0 || loaded < least || loaded > most)
    {
        // Without the number: Python refuses to print those that are very long.
        const std::string message =
            "expected an integer from " + std::to_string(least) + " to " + std::to_string(most);
        PyErr_SetString(PyExc_OverflowError, message.c_str());
        throw py::error_already_set();
    }
    value = static_cast<T>(loaded);
    return true;
}

bool LoadNumber(py::handle source, double& value);

} // namespace Zelnor::Python

namespace pybind11::detail
{

template <>
struct type_caster<Zelnor::Python::Text>
{
    PYBIND11_TYPE_CASTER(Zelnor::Python::Text, const_name("str"));

    bool load(handle source, bool)
    {
        if (PyUnicode_Check(source.ptr()) == 0)
        {
            return false;
        }
        value.bytes = Zelnor::Python::BytesOf(source);
        return true;
    }
    static handle cast(const Zelnor::Python::Text& text, return_value_policy, handle)
    {
        return Zelnor::Python::ToPython(text.bytes).release();
    }
};

template <>
struct type_caster<Zelnor::Python::Path>
{
    PYBIND11_TYPE_CASTER(Zelnor::Python::Path, const_name("str | bytes | os.PathLike"));

    bool load(handle source, bool)
    {
        const bool isText = PyUnicode_Check(source.ptr()) != 0 || PyBytes_Check(source.ptr()) != 0;
        if (!isText && !hasattr(source, "__fspath__"))
        {
            return false;
        }
        value.bytes = Zelnor::Python::PathBytesOf(source);
        return true;
    }
    static handle cast(const Zelnor::Python::Path& path, return_value_policy, handle)
    {
        return PyUnicode_DecodeFSDefaultAndSize(path.bytes.data(),
                                                static_cast<Py_ssize_t>(path.bytes.size()));
    }
};

template <class T>
struct type_caster<Zelnor::Python::Integer<T>>
{
    PYBIND11_TYPE_CASTER(Zelnor::Python::Integer<T>, const_name("int"));

    bool load(handle source, bool) { return Zelnor::Python::LoadInteger(source, value.value); }
    static handle cast(const Zelnor::Python::Integer<T>& number, return_value_policy, handle)
    {
        return int_(number.value).release();
    }
};

template <>
struct type_caster<Zelnor::Python::Number>
{
    PYBIND11_TYPE_CASTER(Zelnor::Python::Number, const_name("float"));

    bool load(handle source, bool) { return Zelnor::Python::LoadNumber(source, value.value); }
};

} // namespace pybind11::detail
