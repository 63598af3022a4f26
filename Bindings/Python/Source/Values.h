// Private to the Python package.
#pragma once

#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Media/Jobs/JobDifferences.h"
#include "Media/Jobs/JobFault.h"
#include "Media/Place.h"
#include "Media/Running/JobRun.h"
#include "Media/Validating/DocumentFault.h"
#include "Media/Verifying/Verification.h"

#include <pybind11/pybind11.h>

#include <vector>

/// \file
/// Results become values of the classes in `zelnor._values`, which are plain Python: they stay what they are,
/// compare, copy and pickle, and hold on to nothing of the library.

namespace Zelnor::Python
{

namespace py = pybind11;

/// The class of that name.
py::object ValueClass(const char* name);

/// A new value of the class of that name.
template <class... Arguments>
py::object MakeValue(const char* name, Arguments&&... arguments)
{
    return ValueClass(name)(std::forward<Arguments>(arguments)...);
}

py::object ValueOf(const Media::Place& place);
py::object ValueOf(const Media::JobFault& fault);
py::object ValueOf(const Conf::TopologyFault& fault);
py::object ValueOf(const Media::DocumentFault& fault);
py::object ValueOf(const Media::JobDifference& difference);
py::object ValueOf(const Media::RunProgress& progress);
py::object ValueOf(const Media::TargetResult& result);
py::object ValueOf(const Media::TargetDifference& difference);
py::object ValueOf(const Media::VideoQuality& quality);
py::object ValueOf(const Media::TargetVerification& verification);

template <class T>
py::list ToList(const std::vector<T>& elements)
{
    py::list list;
    for (const T& element : elements)
    {
        list.append(ValueOf(element));
    }
    return list;
}

/// The same as a tuple, for values that do not change.
template <class T>
py::tuple ToTuple(const std::vector<T>& elements)
{
    return py::tuple(ToList(elements));
}

} // namespace Zelnor::Python
