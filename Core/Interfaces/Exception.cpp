#include "Core/Interfaces/Exception.h"

#include "Core/Private/AttachTag.h"

namespace Zelnor
{

Exception::~Exception() noexcept = default;

namespace Core
{

CoreException::~CoreException() noexcept = default;
PropertyException::~PropertyException() noexcept = default;
MethodIsNotApplicable::~MethodIsNotApplicable() noexcept = default;

} // namespace Core

namespace details
{

ZELNOR_ATTACH_TAG(TagDescription)
ZELNOR_ATTACH_TAG(TagCallStack)
ZELNOR_ATTACH_TAG(Core::PropertyException::TagPropertyName)
ZELNOR_ATTACH_TAG(Core::PropertyException::TagPropertyType)
ZELNOR_ATTACH_TAG(Core::PropertyException::TagMethodName)

} // namespace details

} // namespace Zelnor
