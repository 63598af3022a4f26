#include "Conf/Interfaces/ConfException.h"

#include "Core/Private/AttachTag.h"
#include "Core/Private/Early.h"

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

namespace details
{

ZELNOR_ATTACH_TAG(ProfileException::TagRequestedLink)
ZELNOR_ATTACH_TAG(ProfileException::TagRequestedNodeId)
ZELNOR_ATTACH_TAG(ProfileException::TagJsonBadStructure)

} // namespace details

ZELNOR_EARLY ConfException exportDummyException;
ZELNOR_EARLY PresetException exportDummyException1;
ZELNOR_EARLY ConstraintException exportDummyException2;
ZELNOR_EARLY ConstraintIsNotApplicableForTypeException exportDummyException3;
ZELNOR_EARLY CheckedPropertyHasDifferentTypeException exportDummyException4;
ZELNOR_EARLY HelperException exportDummyException5;
ZELNOR_EARLY FormatException exportDummyException6;
ZELNOR_EARLY ProfileException exportDummyException7;
ZELNOR_EARLY NodeNotFound exportDummyException8;
ZELNOR_EARLY LinkExists exportDummyException9;
ZELNOR_EARLY LinkNotFound exportDummyException10;
ZELNOR_EARLY BadJson exportDummyException11;

} // namespace Zelnor::Conf
