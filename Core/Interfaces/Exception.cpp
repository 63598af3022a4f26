#include "Core/Interfaces/Exception.h"

namespace Zelnor
{

Exception::~Exception() noexcept = default;

namespace Core
{

CoreException::~CoreException() noexcept = default;
PropertyException::~PropertyException() noexcept = default;
MethodIsNotApplicable::~MethodIsNotApplicable() noexcept = default;

} // namespace Core

} // namespace Zelnor
