#pragma once

#include "Core/Interfaces/DataStream.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <string>

namespace Zelnor::Tool
{

/// What messages call the file `name`: "standard input" for "-".
std::string InputName(const std::string& name);

/// The file `name` as a stream, or standard input for "-".
boost::intrusive_ptr<Core::IDataInput> OpenInput(const std::string& name);

} // namespace Zelnor::Tool
