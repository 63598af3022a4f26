#pragma once

#include "Core/Interfaces/Export.h"

#include <exception>
#include <string>

namespace Zelnor::Media
{

/// What a failure of the libraries has to say to people, as one sentence: the details of our exceptions, the
/// message of others without the call stack that may follow it.
ZELNOR_API std::string ErrorText(const std::exception_ptr& failure);

} // namespace Zelnor::Media
