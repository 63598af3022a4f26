#pragma once

#include "Conf/Interfaces/IPreset.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <utility>

/// The smallest preset: a record, and no streams. Presets belong to the application, which usually reads them
/// from a file.
class FixedPreset final : public Zelnor::Counted<Zelnor::Conf::IPreset>
{
public:
    static boost::intrusive_ptr<const IPreset> Create(Zelnor::Core::Property record)
    {
        return new FixedPreset(std::move(record));
    }

    const Zelnor::Core::Property& GetProperty() const override { return m_record; }
    std::uint32_t GetStreamCount() const override { return 0; }
    void GetStreamIndexes(const std::string&, std::vector<int>& out) const override { out.clear(); }

private:
    explicit FixedPreset(Zelnor::Core::Property record) : m_record(std::move(record)) {}

    Zelnor::Core::Property m_record;
};
