#pragma once

#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// Names of all exception classes of the libraries.
__attribute__((visibility("default"))) const std::vector<std::string>& GetExceptionClasses();

/// Throws an object of the class with that name, the way the libraries throw.
[[noreturn]] __attribute__((visibility("default"))) void ThrowByName(const std::string& name);

} // namespace Zelnor::Testing
