#include "Bindings/Python/Source/Arguments.h"

namespace Zelnor::Python
{

std::string BytesOf(py::handle text)
{
    const auto encoded =
        py::reinterpret_steal<py::object>(PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape"));
    if (!encoded)
    {
        throw py::error_already_set();
    }
    return {PyBytes_AS_STRING(encoded.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(encoded.ptr()))};
}

std::string PathBytesOf(py::handle path)
{
    PyObject* converted = nullptr;
    if (PyUnicode_FSConverter(path.ptr(), &converted) == 0)
    {
        throw py::error_already_set();
    }
    const auto bytes = py::reinterpret_steal<py::object>(converted);
    return {PyBytes_AS_STRING(bytes.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr()))};
}

py::str ToPython(const std::string& text)
{
    auto decoded = py::reinterpret_steal<py::object>(
        PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape"));
    if (!decoded)
    {
        throw py::error_already_set();
    }
    return py::reinterpret_borrow<py::str>(decoded);
}

py::list ToPython(const std::vector<std::string>& texts)
{
    py::list list;
    for (const std::string& text : texts)
    {
        list.append(ToPython(text));
    }
    return list;
}

py::tuple ToTuple(const std::vector<std::string>& texts) { return py::tuple(ToPython(texts)); }

bool LoadNumber(py::handle source, double& value)
{
    if (PyBool_Check(source.ptr()) || PyNumber_Check(source.ptr()) == 0)
    {
        return false;
    }
    value = PyFloat_AsDouble(source.ptr());
    if (value == -1 && PyErr_Occurred() != nullptr)
    {
        throw py::error_already_set();
    }
    return true;
}

} // namespace Zelnor::Python
