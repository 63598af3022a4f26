#include "Media/Jobs/SurplusData.h"

#include <utility>

namespace Zelnor::Media
{

namespace
{

/// Follows the depth of brackets. At 1 is the document, at 2 an array of elements, at 3 an element, at 4 its
/// "data", at 5 the only member of that, whose members are counted.
class SurplusScanner
{
public:
    explicit SurplusScanner(std::string_view document) : m_text(document) {}

    SurplusData Scan()
    {
        for (m_next = 0; (m_next = m_text.find_first_of("\"{}[],", m_next)) != std::string_view::npos;
             ++m_next)
        {
            switch (m_text[m_next])
            {
            case '"':
                String();
                break;
            case ',':
                Comma();
                break;
            case '{':
            case '[':
                Open();
                break;
            default:
                --m_depth;
            }
        }
        return m_found;
    }

private:
    enum Depth : std::size_t
    {
        kDocument = 1,
        kArray = 2,
        kElement = 3,
        kData = 4,
        kRecords = 5,
    };

    /// Goes to the end of the text, and remembers it where it can be the key of something asked for. A value
    /// is remembered too, until the next key, and opens nothing.
    void String()
    {
        const std::size_t begin = m_next + 1;
        for (m_next = begin; m_text[m_next] != '"'; ++m_next)
        {
            m_next += m_text[m_next] == '\\' ? 1U : 0U;
        }
        if (m_depth == kDocument || m_depth == kElement)
        {
            m_keys[m_depth] = m_text.substr(begin, m_next - begin);
        }
    }

    void Comma()
    {
        if (m_depth == kArray)
        {
            ++m_index;
        }
        else if (m_depth == kRecords && m_isCounted)
        {
            m_isCounted = false;
            m_list->push_back(m_index);
        }
    }

    void Open()
    {
        ++m_depth;
        switch (m_depth)
        {
        case kArray:
            m_index = 0;
            m_list = m_keys[kDocument] == "vertices" ? First(m_hasVertices, m_found.vertices)
                     : m_keys[kDocument] == "edges"  ? First(m_hasEdges, m_found.edges)
                                                     : nullptr;
            break;
        case kElement:
            m_hasData = false;
            break;
        case kData:
            m_isCounted = m_list != nullptr && m_keys[kElement] == "data" && !std::exchange(m_hasData, true);
            break;
        case kRecords:
            m_isCounted = m_isCounted && !IsRational();
            break;
        default:
            break;
        }
    }

    /// Of equal keys, the first is meant.
    static std::vector<std::size_t>* First(bool& isKnown, std::vector<std::size_t>& list)
    {
        return std::exchange(isKnown, true) ? nullptr : &list;
    }

    /// Arrays of records hold objects.
    bool IsRational() const
    {
        const std::size_t first = m_text.find_first_not_of(" \t\r\n", m_next + 1);
        return m_text[m_next] == '[' && m_text[first] != '{';
    }

    std::string_view m_text;
    std::size_t m_next = 0;
    std::size_t m_depth = 0;
    std::size_t m_index = 0;
    bool m_hasVertices = false;
    bool m_hasEdges = false;
    bool m_hasData = false;
    bool m_isCounted = false; ///< whether a comma at the records' depth is a finding
    std::string_view m_keys[kData];
    SurplusData m_found;
    std::vector<std::size_t>* m_list = nullptr; ///< of the array that is scanned; null: not one of the two
};

} // namespace

SurplusData FindSurplusData(std::string_view document) { return SurplusScanner(document).Scan(); }

} // namespace Zelnor::Media
