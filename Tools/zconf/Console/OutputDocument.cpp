#include "Tools/zconf/Console/OutputDocument.h"

#include "Tools/zconf/Console/Errors.h"
#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/StandardStreams.h"

#include <system_error>

namespace Zelnor::Tool
{

namespace
{

/// The least time of all when there is no such file.
std::filesystem::file_time_type TimeOf(const std::string& name)
{
    std::error_code error;
    const auto time = std::filesystem::last_write_time(name, error);
    return error ? std::filesystem::file_time_type::min() : time;
}

} // namespace

OutputDocument::OutputDocument(const std::string& name) : m_name(name), m_time(TimeOf(name))
{
    if (IsStandardStream(name))
    {
        return;
    }
    if (IsReplaceable(name))
    {
        // Only whether it can be done: a signal may end the command before there is anything to write.
        Core::AtomicFileDataOutput::Create(name);
        m_collected = Core::MemoryDataOutput::Create();
        SetStandardOutput(m_collected);
    }
    else
    {
        SetStandardOutput(Core::FileDataOutput::Create(name));
    }
}

OutputDocument::~OutputDocument() { SetStandardOutput(nullptr); }

void OutputDocument::Commit()
{
    if (m_collected == nullptr)
    {
        return;
    }
    if (TimeOf(m_name) != m_time)
    {
        throw ToolError("'" + m_name + "' was written while the command ran, so it is not replaced");
    }
    SetStandardOutput(nullptr);
    WriteDocument(m_name, m_collected->GetData());
}

} // namespace Zelnor::Tool
