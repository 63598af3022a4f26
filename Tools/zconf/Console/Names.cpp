#include "Tools/zconf/Console/Names.h"

#include "Tools/zconf/Console/Errors.h"

namespace Zelnor::Tool
{

void ThrowUnknownName(const std::string& noun, const std::string& name, const std::vector<std::string>& known)
{
    throw ToolError("'" + name + "' is not a known " + noun + DidYouMean(name, known));
}

} // namespace Zelnor::Tool
