#include "Tools/zconf/Console/Input.h"

#include "Tools/zconf/Console/Output.h"
#include "Tools/zconf/Console/StandardStreams.h"

namespace Zelnor::Tool
{

std::string InputName(const std::string& name) { return IsStandardStream(name) ? "standard input" : name; }

boost::intrusive_ptr<Core::IDataInput> OpenInput(const std::string& name)
{
    return IsStandardStream(name) ? MakeStandardInput()
                                  : boost::intrusive_ptr<Core::IDataInput>(Core::FileDataInput::Create(name));
}

} // namespace Zelnor::Tool
