#pragma once

#include "Core/Interfaces/Property.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace Zelnor::Fuzz
{

/// Makes values of any bytes. After the last byte everything is 0 or empty.
class Bytes
{
public:
    explicit Bytes(std::string_view bytes) : m_bytes(bytes) {}

    bool IsEmpty() const { return m_bytes.empty(); }

    std::uint8_t Byte()
    {
        if (m_bytes.empty())
        {
            return 0;
        }
        const auto byte = static_cast<std::uint8_t>(m_bytes.front());
        m_bytes.remove_prefix(1);
        return byte;
    }

    /// Eight bytes, the lowest first.
    long long Number()
    {
        std::uint64_t number = 0;
        for (unsigned int shift = 0; shift < 64; shift += 8)
        {
            number |= std::uint64_t{Byte()} << shift;
        }
        return static_cast<long long>(number);
    }

    /// A byte that tells the length, and that many bytes.
    std::string Text()
    {
        const std::size_t size = Byte();
        std::string text(m_bytes.substr(0, size));
        m_bytes.remove_prefix(text.size());
        return text;
    }

    /// A record with its descendants, not more than `levels` deep.
    Core::Property Record(int levels)
    {
        const int kind = Byte() % 8;
        std::string name = Text();
        switch (kind)
        {
        case 0:
            return Core::Property::None(name);
        case 1:
            return Core::Property(name, Number());
        case 2:
            return Core::Property(name, Text());
        case 3:
            // A long text of a short one.
            return Core::Property(name, Repeated(Text(), 64U * Byte()));
        case 4:
            return Core::Property(name, Core::Property::Ratio(Number() / 2, (Number() & 0xFFFF) + 1));
        default:
            return Group(std::move(name), levels);
        }
    }

private:
    std::string Repeated(const std::string& text, std::size_t times)
    {
        std::string all;
        for (std::size_t i = 0; i < times && text.size() <= m_spare; ++i)
        {
            all += text;
            m_spare -= text.size();
        }
        return all;
    }

    Core::Property Group(std::string name, int levels)
    {
        Core::Property group(std::move(name));
        for (int left = levels == 0 ? 0 : Byte() % 8; left > 0 && !IsEmpty(); --left)
        {
            group.Add(Record(levels - 1));
        }
        return group;
    }

    std::string_view m_bytes;
    /// How many bytes may come from repetition, so that an input stays cheap.
    std::size_t m_spare = 20'000;
};

} // namespace Zelnor::Fuzz
