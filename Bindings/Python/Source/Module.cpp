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

/// Not a function of pybind11: in a subinterpreter that would use objects of the main one.
PyObject* RequireMainInterpreter(PyObject*, PyObject*)
{
    if (PyInterpreterState_Get() != PyInterpreterState_Main())
    {
        PyErr_SetString(PyExc_ImportError, "zelnor does not support subinterpreters");
        return nullptr;
    }
    Py_RETURN_NONE;
}

PyMethodDef s_requireMainInterpreter = {"require_main_interpreter", &RequireMainInterpreter, METH_NOARGS,
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

PYBIND11_MODULE(_zelnor, module)
{
    using namespace Zelnor::Python;
    if (PyInterpreterState_Get() != PyInterpreterState_Main())
    {
        throw py::import_error("zelnor does not support subinterpreters");
    }
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
}
