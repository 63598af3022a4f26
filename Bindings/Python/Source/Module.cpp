#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Exceptions.h"
#include "Bindings/Python/Source/Records.h"

#include <unistd.h>

namespace Zelnor::Python
{

namespace
{

int IgnoreArguments(PyObject*, PyObject*, PyObject*) { return 0; }

PyObject* RefuseToMake(PyTypeObject* type, PyObject*, PyObject*)
{
    PyErr_Format(PyExc_TypeError, "cannot create '%s' instances", type->tp_name);
    return nullptr;
}

/// If not, sets Python's error.
bool IsMainInterpreter()
{
    if (PyInterpreterState_Get() != PyInterpreterState_Main())
    {
        PyErr_SetString(PyExc_ImportError, "zelnor does not support subinterpreters");
        return false;
    }
    return true;
}

/// Not a function of pybind11: in a subinterpreter that would use objects of the main one.
PyObject* RequireMainInterpreter(PyObject*, PyObject*)
{
    if (!IsMainInterpreter())
    {
        return nullptr;
    }
    Py_RETURN_NONE;
}

PyMethodDef s_requireMainInterpreter = {"_require_main_interpreter", &RequireMainInterpreter, METH_NOARGS,
                                        nullptr};

} // namespace

void StayOutOfTheEnd()
{
    while (_Py_IsFinalizing() != 0)
    {
        pause();
    }
}

WithoutLock::~WithoutLock()
{
    StayOutOfTheEnd();
    PyEval_RestoreThread(m_state);
}

void Seal(py::object type, newfunc make)
{
    auto* const object = reinterpret_cast<PyTypeObject*>(type.ptr());
    object->tp_new = make != nullptr ? make : &RefuseToMake;
    object->tp_init = &IgnoreArguments;
    PyType_Modified(object);
}

} // namespace Zelnor::Python

namespace
{

void Bind(Zelnor::Python::py::module_& module)
{
    using namespace Zelnor::Python;
    // The base of our classes makes objects of no class when it is called, as `pickle` does, and that ends
    // the process. It is our own: see PYBIND11_INTERNALS_KIND.
    Seal(py::reinterpret_borrow<py::object>(py::detail::get_internals().instance_base), nullptr);
    module.attr("_require_main_interpreter") =
        py::reinterpret_steal<py::object>(PyCFunction_New(&s_requireMainInterpreter, nullptr));
    BindExceptions();
    BindRecords(module);
    BindVocabulary(module);
    BindGraphs(module);
    BindLookUps(module);
    BindCalculators(module);
    BindPresets(module);
    BindProbing(module);
    BindPlanning(module);
    BindRunning(module);
    BindValidating(module);
}

} // namespace

/// What PYBIND11_MODULE would define, but for the question that comes first: pybind11 waits for ever for the
/// lock of a subinterpreter.
extern "C" PYBIND11_EXPORT PyObject* PyInit__zelnor()
{
    namespace py = Zelnor::Python::py;
    if (!Zelnor::Python::IsMainInterpreter())
    {
        return nullptr;
    }
    PYBIND11_CHECK_PYTHON_VERSION
    PYBIND11_ENSURE_INTERNALS_READY
    static py::module_::module_def s_definition;
    auto module = py::module_::create_extension_module("_zelnor", nullptr, &s_definition);
    try
    {
        Bind(module);
        return module.ptr();
    }
    PYBIND11_CATCH_INIT_EXCEPTIONS
}
