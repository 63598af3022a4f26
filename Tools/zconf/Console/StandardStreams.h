#pragma once

#include "Core/Interfaces/DataStream.h"

#include <string>

/// \file
/// Standard input, output and error. They are used through their descriptors instead of being opened anew by
/// a name such as /dev/stdout, which would truncate a file that the shell appends to and fails on sockets.

namespace Zelnor::Tool
{

/// Thrown when the reader of standard output has closed its end of the pipe.
struct ClosedPipe
{};

/// Makes sure that the descriptors 0 to 2 are in use, so that messages never end up in a file that we opened.
/// A closed pipe or a file at its size limit becomes an error of the write instead of ending the process.
void PrepareStandardStreams();

/// Ends the process without a message, by SIGPIPE like the other programs of a pipeline.
int EndAsFilter();

/// Writes a message to standard error. Failures are ignored, since there is nowhere left to report them.
void WriteMessage(const std::string& text) noexcept;

boost::intrusive_ptr<Core::IDataInput> MakeStandardInput();
/// \throw ClosedPipe from `Write`
boost::intrusive_ptr<Core::IDataOutput> MakeStandardOutput();

/// What takes the place of standard output for the program's own documents; null: nothing does.
void SetStandardOutput(const boost::intrusive_ptr<Core::IDataOutput>& output);
bool IsStandardOutputReplaced();

} // namespace Zelnor::Tool
