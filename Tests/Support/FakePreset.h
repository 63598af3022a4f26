#pragma once

#include "Conf/Interfaces/IPreset.h"
#include "Core/Interfaces/RefCountImpl.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// A preset that answers what a test tells it to.
class FakePreset final : public Counted<Conf::IPreset>
{
public:
    using StreamIndexes = std::map<std::string, std::vector<int>>;

    static boost::intrusive_ptr<const FakePreset>
    Create(const Core::Property& record, std::uint32_t streamCount = 0, StreamIndexes streamIndexes = {})
    {
        return new FakePreset(record, streamCount, std::move(streamIndexes));
    }

    const Core::Property& GetProperty() const override { return m_record; }
    std::uint32_t GetStreamCount() const override { return m_streamCount; }
    void GetStreamIndexes(const std::string& streamType, std::vector<int>& out) const override
    {
        const auto found = m_streamIndexes.find(streamType);
        out = found == m_streamIndexes.end() ? std::vector<int>() : found->second;
    }

private:
    FakePreset(const Core::Property& record, std::uint32_t streamCount, StreamIndexes streamIndexes)
        : m_record(record), m_streamCount(streamCount), m_streamIndexes(std::move(streamIndexes))
    {}
    ~FakePreset() override = default;

    Core::Property m_record;
    std::uint32_t m_streamCount;
    StreamIndexes m_streamIndexes;
};

} // namespace Zelnor::Testing
