#pragma once

#include <string>
#include <vector>

namespace Zelnor::Testing
{

struct Constant
{
    std::string name;     ///< with its class
    std::string expected; ///< the text in the list
    std::string read;     ///< what the constant held when it was read
    const std::string* address;
};

/// All constants of the vocabulary, read while this library's own static objects were made.
__attribute__((visibility("default"))) const std::vector<Constant>& GetConstantsReadAtLoad();

} // namespace Zelnor::Testing
