#pragma once

#include "Core/Interfaces/DataStream.h"

#include <functional>
#include <string>

namespace Zelnor::Tool
{

/// Whether the file name given on the command line means standard input or output: "-".
bool IsStandardStream(const std::string& name);

/// Whether the file can be put in place as a whole: it is a regular one, or not there yet.
bool IsReplaceable(const std::string& name);

/// Writes to standard output.
void WriteText(const std::string& text);

/// Writes a document to the file `name`, or to standard output for "-". A regular file is replaced as a whole
/// or stays as it was; a device or pipe is written to directly.
void WriteDocument(const std::string& name,
                   const std::function<void(const boost::intrusive_ptr<Core::IDataOutput>&)>& write);
void WriteDocument(const std::string& name, const std::string& text);

/// The same for JSON, which a terminal gets in the form of `VisibleJson`.
void WriteJsonDocument(const std::string& name,
                       const std::function<void(const boost::intrusive_ptr<Core::IDataOutput>&)>& write);

/// The same for a file that must not be there yet. It appears as a whole, if its file system can do that.
/// \throw ToolError "'p.json' exists already; --overwrite replaces it"
void WriteNewDocument(const std::string& name, const std::string& text);

} // namespace Zelnor::Tool
