#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/IRefCountable.h"
#include "Core/Interfaces/Property.h"

#include <boost/property_tree/ptree.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <ostream>
#include <string>

namespace Zelnor::Conf
{

/// Key of a descriptor's object name in its internal properties.
extern ZELNOR_API const std::string TAG_OBJECT;

/// What all descriptors (of a file, of a stream's codec) have in common: a record, which callers read, edit,
/// compare and store, and beside it a few internal properties that live only as long as the object and take
/// part in nothing.
///
/// A descriptor is reference-counted by its concrete class and is not synchronised.
class ZELNOR_API IFormat : public virtual IRefCountable
{
public:
    // TAG_METADATA
#define ZELNOR_TEXT(name, text) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormat.def"

    /// The record becomes a group named `objectName` with one empty child group "metadata"; the internal
    /// properties hold "object_name" = `objectName`.
    explicit IFormat(const std::string& objectName);
    /// A deep copy of the record and of the internal properties.
    IFormat(const IFormat& other);
    ~IFormat() override;

    /// The record: a group that always has a child "metadata".
    virtual const Core::Property& GetProperty() const;
    /// Replaces the record, name included; an empty child "metadata" is added if there is none.
    /// \throw Core::MethodIsNotApplicable when `property` cannot hold "metadata"; the record stays as it was
    virtual void SetProperty(const Core::Property& property);

    const boost::property_tree::ptree& GetInternalProperties() const { return m_internalProperties; }
    boost::property_tree::ptree& GetInternalProperties() { return m_internalProperties; }

    /// Makes the record's child "metadata" a copy of `metadata`, whatever its name.
    void SetMetadata(const Core::Property& metadata);
    const Core::Property& GetMetadata() const;

    /// Whether the records are equal; internal properties take no part. Nothing equals a null pointer.
    bool Compare(const boost::intrusive_ptr<const IFormat>& other) const;
    /// Writes the record and the first level of the internal properties, for people.
    void PrintContent(std::ostream& os) const;

protected:
    IFormat& operator=(const IFormat& other);

    Core::Property m_property;
    boost::property_tree::ptree m_internalProperties;
};

} // namespace Zelnor::Conf
