#include "Conf/Interfaces/ConfException.h"

namespace Zelnor::Conf
{

ConfException::~ConfException() noexcept = default;
PresetException::~PresetException() noexcept = default;
ConstraintException::~ConstraintException() noexcept = default;
ConstraintIsNotApplicableForTypeException::~ConstraintIsNotApplicableForTypeException() noexcept = default;
CheckedPropertyHasDifferentTypeException::~CheckedPropertyHasDifferentTypeException() noexcept = default;
HelperException::~HelperException() noexcept = default;
FormatException::~FormatException() noexcept = default;
ProfileException::~ProfileException() noexcept = default;
NodeNotFound::~NodeNotFound() noexcept = default;
LinkExists::~LinkExists() noexcept = default;
LinkNotFound::~LinkNotFound() noexcept = default;
BadJson::~BadJson() noexcept = default;

ConfException exportDummyException;
PresetException exportDummyException1;
ConstraintException exportDummyException2;
ConstraintIsNotApplicableForTypeException exportDummyException3;
CheckedPropertyHasDifferentTypeException exportDummyException4;
HelperException exportDummyException5;
FormatException exportDummyException6;
ProfileException exportDummyException7;
NodeNotFound exportDummyException8;
LinkExists exportDummyException9;
LinkNotFound exportDummyException10;
BadJson exportDummyException11;

} // namespace Zelnor::Conf
