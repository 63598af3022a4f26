#pragma once

#include "Core/Interfaces/DataStream.h"

#include <string>

/// \file
/// The three streams that every process is given. They are used through their descriptors, not opened anew by
/// a name such as /dev/stdout: that would empty a file that the shell appends to, and fails on sockets.

namespace Zelnor::Tool
{

/// Nobody reads what is being written to standard output any more.
struct ClosedPipe
{};

/// Makes sure that the descriptors 0 to 2 are taken, so that no file of ours gets a number that messages are
/// written to, and that a closed pipe or a file that may not grow is an exception, not the end.
void PrepareStandardStreams();

/// Ends the process quietly, by the signal that the other programs of a pipeline end by.
int EndAsFilter();

/// Writes a message to standard error; failures are ignored, for there is nobody left to tell.
void WriteMessage(const std::string& text) noexcept;

boost::intrusive_ptr<Core::IDataInput> MakeStandardInput();
/// \throw ClosedPipe from `Write`
boost::intrusive_ptr<Core::IDataOutput> MakeStandardOutput();

} // namespace Zelnor::Tool
