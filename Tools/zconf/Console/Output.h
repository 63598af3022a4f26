#pragma once

#include "Core/Interfaces/DataStream.h"

#include <functional>
#include <string>

namespace Zelnor::Tool
{

/// Whether `name`, given where a file may stand, means standard input or output.
bool IsStandardStream(const std::string& name);

/// Writes to standard output.
void WriteText(const std::string& text);

/// Makes `name` hold what `write` writes: standard output for "-"; a regular file gets it as a whole or stays
/// as it was; a device or a pipe gets it as it comes.
void WriteDocument(const std::string& name,
                   const std::function<void(const boost::intrusive_ptr<Core::IDataOutput>&)>& write);
void WriteDocument(const std::string& name, const std::string& text);

} // namespace Zelnor::Tool
