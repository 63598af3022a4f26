#include "Core/Interfaces/JsonStream.h"

#include "Core/Interfaces/Exception.h"

namespace Zelnor::Core
{

namespace
{

constexpr const char* kUnit = "Core/Interfaces/JsonStream";

CoreException Unsupported(const char* operation)
{
    CoreException exception;
    exception << TagDescription(std::string("This JSON stream does not support ") + operation);
    return exception;
}

} // namespace

JsonZelnorStreamIn::JsonZelnorStreamIn(IDataInput& input) : m_input(input)
{
    m_next = m_end = m_buffer.data();
    Fill();
}

void JsonZelnorStreamIn::Fill()
{
    m_taken += static_cast<std::size_t>(m_next - m_buffer.data());
    m_next = m_end = m_buffer.data();
    m_buffer.front() = '\0';
    const std::size_t count = ReadUpTo(m_input, m_buffer.data(), m_buffer.size() - 1);
    m_end += count;
    m_buffer[count] = '\0';
}

JsonZelnorStreamIn::Ch* JsonZelnorStreamIn::PutBegin() { ZELNOR_THROW(kUnit, Unsupported("writing")); }
void JsonZelnorStreamIn::Put(Ch) { ZELNOR_THROW(kUnit, Unsupported("writing")); }
void JsonZelnorStreamIn::Flush() { ZELNOR_THROW(kUnit, Unsupported("writing")); }
std::size_t JsonZelnorStreamIn::PutEnd(Ch*) { ZELNOR_THROW(kUnit, Unsupported("writing")); }

JsonZelnorStreamOut::JsonZelnorStreamOut(IDataOutput& output) : m_output(output) {}

void JsonZelnorStreamOut::Flush()
{
    if (m_used != 0)
    {
        m_output.Write(m_buffer.data(), m_used);
        m_used = 0;
    }
}

JsonZelnorStreamOut::Ch JsonZelnorStreamOut::Peek() const { ZELNOR_THROW(kUnit, Unsupported("reading")); }
JsonZelnorStreamOut::Ch JsonZelnorStreamOut::Take() { ZELNOR_THROW(kUnit, Unsupported("reading")); }
std::size_t JsonZelnorStreamOut::Tell() const { ZELNOR_THROW(kUnit, Unsupported("reading")); }
JsonZelnorStreamOut::Ch* JsonZelnorStreamOut::PutBegin() { ZELNOR_THROW(kUnit, Unsupported("reading")); }
std::size_t JsonZelnorStreamOut::PutEnd(Ch*) { ZELNOR_THROW(kUnit, Unsupported("reading")); }

} // namespace Zelnor::Core
