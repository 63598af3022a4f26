// Private to the Python package.
#pragma once

#include "Conf/Interfaces/IPreset.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Media/Probe/MediaProbe.h"
#include "Media/Running/JobRun.h"

#include <pybind11/pybind11.h>

#include <cstddef>
#include <memory>
#include <string>

/// \file
/// The classes that are more than values: they hold something of the library.

namespace Zelnor::Python
{

namespace py = pybind11;

/// A job's graph. Every edit holds the interpreter's lock, and so does every look; what runs without the lock
/// counts as a user, and a graph that has one refuses edits.
struct Graph
{
    boost::intrusive_ptr<Conf::ITranscodingMetaGraph> graph = Conf::ITranscodingMetaGraph::Create();
    int users = 0;
};

struct Preset
{
    boost::intrusive_ptr<const Conf::IPreset> preset;
};

struct MediaFile
{
    std::shared_ptr<const Media::MediaFile> file;
};

/// A stream keeps its file.
struct MediaStream
{
    const Media::MediaStream& Get() const { return file->streams[position]; }

    std::shared_ptr<const Media::MediaFile> file;
    std::size_t position;
};

/// Uses a graph as long as it lives. It is made and destroyed with the interpreter's lock.
class GraphUse
{
public:
    explicit GraphUse(Graph& graph) : m_graph(graph) { ++m_graph.users; }
    ~GraphUse() { --m_graph.users; }
    GraphUse(const GraphUse&) = delete;
    GraphUse& operator=(const GraphUse&) = delete;

private:
    Graph& m_graph;
};

/// Does not return once the interpreter ends: a thread that asked for its lock then would be ended in a place
/// that cannot throw, and the process with it.
void StayOutOfTheEnd();

/// Gives up the interpreter's lock as long as it lives.
class WithoutLock
{
public:
    WithoutLock() : m_state(PyEval_SaveThread()) {}
    ~WithoutLock();
    WithoutLock(const WithoutLock&) = delete;
    WithoutLock& operator=(const WithoutLock&) = delete;

private:
    PyThreadState* m_state;
};

/// Python's `T.__new__` makes memory that nobody has initialised: only complete objects may come to be.
/// \param make  what calling the class does; null for classes that only the library makes
void Seal(py::object type, newfunc make);

/// What calling a class does that needs no arguments.
template <class T>
PyObject* MakeDefault(PyTypeObject* type, PyObject* arguments, PyObject* names)
{
    if (PyTuple_GET_SIZE(arguments) != 0 || (names != nullptr && PyDict_Size(names) != 0))
    {
        PyErr_Format(PyExc_TypeError, "%s() takes no arguments", type->tp_name);
        return nullptr;
    }
    try
    {
        return py::cast(T{}, py::return_value_policy::move).release().ptr();
    }
    catch (const std::bad_alloc&)
    {
        return PyErr_NoMemory();
    }
}

void BindGraphs(py::module_& module);
void BindVocabulary(py::module_& module);
void BindLookUps(py::module_& module);
void BindCalculators(py::module_& module);
void BindPresets(py::module_& module);
void BindProbing(py::module_& module);
void BindPlanning(py::module_& module);
void BindRunning(py::module_& module);
void BindValidating(py::module_& module);

} // namespace Zelnor::Python
