#include "Conf/Interfaces/IFormat.h"

#include "Core/Interfaces/PrintPropertyValue.h"
#include "Core/Private/Early.h"

#include <utility>

namespace Zelnor::Conf
{

ZELNOR_EARLY const std::string TAG_OBJECT("object_name");

IFormat::IFormat(const std::string& objectName) : m_property(objectName)
{
    m_property.SetChild(TAG_METADATA);
    m_internalProperties.put(TAG_OBJECT, objectName);
}

IFormat::IFormat(const IFormat& other) = default;

IFormat& IFormat::operator=(const IFormat& other) = default;

IFormat::~IFormat() = default;

const Core::Property& IFormat::GetProperty() const { return m_property; }

void IFormat::SetProperty(const Core::Property& property)
{
    Core::Property copy(property);
    if (!copy.ChildExists(TAG_METADATA))
    {
        copy.SetChild(TAG_METADATA);
    }
    m_property = std::move(copy);
}

void IFormat::SetMetadata(const Core::Property& metadata) { m_property.SetChild(TAG_METADATA, metadata); }

const Core::Property& IFormat::GetMetadata() const { return m_property[TAG_METADATA]; }

bool IFormat::Compare(const boost::intrusive_ptr<const IFormat>& other) const
{
    return other != nullptr && m_property == other->GetProperty();
}

void IFormat::PrintContent(std::ostream& os) const
{
    os << "======External props:=====" << std::endl;
    Core::PrintPropertyValue(m_property, 0, os, true, true);
    os << std::flush << "======Runtime props:=======" << std::endl;
    for (const auto& [key, value] : m_internalProperties)
    {
        os << key << ": " << value.data() << std::endl;
    }
}

} // namespace Zelnor::Conf
