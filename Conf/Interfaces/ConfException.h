#pragma once

#include "Core/Interfaces/Exception.h"
#include "Core/Interfaces/Export.h"

#include <string>
#include <utility>

namespace Zelnor::Conf
{

namespace details
{
struct ZELNOR_API RequestedLinkTag;
struct ZELNOR_API RequestedNodeIdTag;
struct ZELNOR_API JsonBadStructureTag;
} // namespace details

/// The root of the configuration library's exceptions.
class ZELNOR_API ConfException : public virtual Exception
{
public:
    ~ConfException() noexcept override;
};

/// For use by the preset manager; this library does not throw it.
class ZELNOR_API PresetException : public virtual ConfException
{
public:
    ~PresetException() noexcept override;
};

/// For use by the preset manager's constraints; this library does not throw it.
class ZELNOR_API ConstraintException : public virtual ConfException
{
public:
    ~ConstraintException() noexcept override;
};

/// A constraint was applied to a property of a type that it does not support.
class ZELNOR_API ConstraintIsNotApplicableForTypeException : public ConstraintException
{
public:
    ~ConstraintIsNotApplicableForTypeException() noexcept override;
};

/// A property that is checked has another type than its constraint.
class ZELNOR_API CheckedPropertyHasDifferentTypeException : public ConstraintException
{
public:
    ~CheckedPropertyHasDifferentTypeException() noexcept override;
};

/// For use by helpers of callers; this library does not throw it.
class ZELNOR_API HelperException : public virtual ConfException
{
public:
    ~HelperException() noexcept override;
};

/// A codec, sample format or channel layout was not found. Carries a description.
class ZELNOR_API FormatException : public virtual ConfException
{
public:
    ~FormatException() noexcept override;
};

/// A failure of a transcoding graph.
class ZELNOR_API ProfileException : public virtual ConfException
{
public:
    /// The identifiers of the source and the target node of the link that was asked for.
    using TagRequestedLink = boost::error_info<details::RequestedLinkTag, std::pair<long long, long long>>;
    /// The identifier of the node that was asked for.
    using TagRequestedNodeId = boost::error_info<details::RequestedNodeIdTag, long long>;
    /// What is wrong in a JSON document.
    using TagJsonBadStructure = boost::error_info<details::JsonBadStructureTag, std::string>;

    ~ProfileException() noexcept override;
};

namespace details
{
ZELNOR_TAG(ProfileException::TagRequestedLink)
ZELNOR_TAG(ProfileException::TagRequestedNodeId)
ZELNOR_TAG(ProfileException::TagJsonBadStructure)
} // namespace details

/// A graph does not have a node with the identifier in `TagRequestedNodeId`.
class ZELNOR_API NodeNotFound : public ProfileException
{
public:
    ~NodeNotFound() noexcept override;
};

/// A graph has the link in `TagRequestedLink` already, or a node still has it.
class ZELNOR_API LinkExists : public ProfileException
{
public:
    ~LinkExists() noexcept override;
};

/// A graph does not have the link in `TagRequestedLink`.
class ZELNOR_API LinkNotFound : public ProfileException
{
public:
    ~LinkNotFound() noexcept override;
};

/// A JSON document is not a graph; `TagJsonBadStructure` says what is wrong with it.
class ZELNOR_API BadJson : public ProfileException
{
public:
    ~BadJson() noexcept override;
};

/// One object of each class above, in that order. They make this library export the classes' type
/// information, so that other libraries can catch by type. Nothing reads them.
extern ZELNOR_API ConfException exportDummyException;
extern ZELNOR_API PresetException exportDummyException1;
extern ZELNOR_API ConstraintException exportDummyException2;
extern ZELNOR_API ConstraintIsNotApplicableForTypeException exportDummyException3;
extern ZELNOR_API CheckedPropertyHasDifferentTypeException exportDummyException4;
extern ZELNOR_API HelperException exportDummyException5;
extern ZELNOR_API FormatException exportDummyException6;
extern ZELNOR_API ProfileException exportDummyException7;
extern ZELNOR_API NodeNotFound exportDummyException8;
extern ZELNOR_API LinkExists exportDummyException9;
extern ZELNOR_API LinkNotFound exportDummyException10;
extern ZELNOR_API BadJson exportDummyException11;

} // namespace Zelnor::Conf
