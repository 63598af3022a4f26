// Private to the Python package.
#pragma once

#include <pybind11/pybind11.h>

namespace Zelnor::Python
{

namespace py = pybind11;

/// Makes exceptions of the libraries the classes of `zelnor._exceptions`, with their tags as attributes.
void BindExceptions();

} // namespace Zelnor::Python
