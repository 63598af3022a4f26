#include "Core/Interfaces/IBlob.h"

namespace Zelnor
{

IBlob::~IBlob() = default;

} // namespace Zelnor
