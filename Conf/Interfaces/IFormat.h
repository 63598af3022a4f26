#pragma once

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/IRefCountable.h"
#include "Core/Interfaces/Property.h"

#include <boost/none_t.hpp>
// As in Exception.h: an object that GCC would make unique in the process.
#pragma GCC visibility push(hidden)
#include <boost/none.hpp>
#pragma GCC visibility pop
#include <boost/property_tree/ptree.hpp>
#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <ostream>
#include <string>

namespace Zelnor::Conf
{

/// Key of a descriptor's object name in its internal properties.
extern ZELNOR_API const std::string TAG_OBJECT;

/// The base of all descriptors, of files and of the codecs of streams. A descriptor has a record, which
/// callers read, edit, compare and store, and a few internal properties, which are neither compared nor
/// stored.
///
/// The concrete class counts the references. Access is not synchronised.
class ZELNOR_API IFormat : public virtual IRefCountable
{
public:
    // TAG_METADATA
#define ZELNOR_TEXT(name, text) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormat.def"

    /// Makes the record a group named `objectName` with one child, the empty group "metadata". The internal
    /// properties contain "object_name" = `objectName`.
    explicit IFormat(const std::string& objectName);
    /// Makes a deep copy of the record and of the internal properties.
    IFormat(const IFormat& other);
    ~IFormat() override;

    /// The record: a group that always has a child "metadata".
    virtual const Core::Property& GetProperty() const;
    /// Replaces the record, name included; an empty child "metadata" is added if there is none.
    /// \throw Core::MethodIsNotApplicable when `property` cannot hold "metadata"; the record stays as it was
    virtual void SetProperty(const Core::Property& property);
    /// What the process needs beside the record, as the object name.
    const boost::property_tree::ptree& GetInternalProperties() const { return m_internalProperties; }
    boost::property_tree::ptree& GetInternalProperties() { return m_internalProperties; }

    /// Makes the record's child "metadata" a copy of `metadata`, whose own name is ignored.
    void SetMetadata(const Core::Property& metadata);
    const Core::Property& GetMetadata() const;

    /// Whether the records are equal; internal properties are not compared. False for a null pointer.
    bool Compare(const boost::intrusive_ptr<const IFormat>& other) const;
    /// Writes the record and the first level of the internal properties, for people.
    void PrintContent(std::ostream& os) const;

protected:
    IFormat& operator=(const IFormat& other); ///< copies the record and the internal properties

    Core::Property m_property;                        ///< the record
    boost::property_tree::ptree m_internalProperties; ///< neither compared nor stored
};

} // namespace Zelnor::Conf
