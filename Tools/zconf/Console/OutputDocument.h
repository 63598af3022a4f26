#pragma once

#include "Core/Interfaces/DataStream.h"

#include <filesystem>
#include <string>

namespace Zelnor::Tool
{

/// Where a command's document goes instead of to standard output. What is written to standard output while
/// this lives is written to the file; a regular one is replaced as a whole by `Commit`, and otherwise stays.
class OutputDocument
{
public:
    /// \param name  a file, which can be written: a run may take hours before it is; "-": standard output
    explicit OutputDocument(const std::string& name);
    ~OutputDocument();
    OutputDocument(const OutputDocument&) = delete;
    OutputDocument& operator=(const OutputDocument&) = delete;

    /// \throw ToolError when somebody else has written the file meanwhile, as the command's own run may do
    void Commit();

private:
    std::string m_name;
    std::filesystem::file_time_type m_time;                   ///< when the file was written last
    boost::intrusive_ptr<Core::MemoryDataOutput> m_collected; ///< null: it is written directly
};

} // namespace Zelnor::Tool
