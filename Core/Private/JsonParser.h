#pragma once

// Private to the libraries, not installed: reads JSON faster than RapidJSON does by itself.

#include "Core/Interfaces/JsonMemory.h"
#include "Core/Private/JsonCursor.h"

#include <boost/container/small_vector.hpp>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace Zelnor::Core
{

/// Sends the events of a value to a handler:
/// \code
/// void Null();
/// void Bool(bool value);
/// void Int64(std::int64_t value);
/// void Uint64(std::uint64_t value); // beyond the range of the former
/// void Double(double value);
/// void String(std::string_view text, bool copy); // copy: the text is gone when this returns
/// void Key(std::string_view text, bool copy);
/// void StartObject();
/// void EndObject(std::size_t members);
/// void StartArray();
/// void EndArray(std::size_t elements);
/// /// Whether the handler reads the value to come itself, and whether that was JSON.
/// bool ReadsValue() const;
/// bool ReadValue(JsonCursor& cursor);
/// \endcode
/// `JsonCursor::kPadding` bytes may be read from each text on.
///
/// RapidJSON takes more than half of the time of a load when it reads a whole document without recursion. So
/// the structure, plain texts and plain integers are read here, and RapidJSON reads everything else, value by
/// value: texts with escapes, other numbers and words, and what is wrong.
template <class Handler>
class JsonParser
{
public:
    JsonParser(JsonCursor& cursor, Handler& handler) : m_cursor(cursor), m_handler(handler) {}

    /// Reads the value that comes next, and what is blank before it.
    /// \returns whether it is JSON
    /// \throw what the input and the handler throw, and `std::bad_alloc`
    bool Parse()
    {
        m_cursor.SkipBlanks();
        bool isGood = Value();
        while (isGood && !m_open.empty())
        {
            isGood = MemberOrEnd();
        }
        return isGood;
    }

private:
    /// An object or array that has not ended.
    struct Open
    {
        char end;
        std::size_t members;
    };

    /// Sends what RapidJSON reads; a text as a name where one is expected.
    struct Forward
    {
        bool Null() { return handler.Null(), true; }
        bool Bool(bool value) { return handler.Bool(value), true; }
        bool Int(int value) { return handler.Int64(value), true; }
        bool Uint(unsigned value) { return handler.Int64(value), true; }
        bool Int64(std::int64_t value) { return handler.Int64(value), true; }
        bool Uint64(std::uint64_t value)
        {
            constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
            return value <= kMost ? Int64(static_cast<std::int64_t>(value)) : (handler.Uint64(value), true);
        }
        bool Double(double value) { return handler.Double(value), true; }
        bool String(const char* text, rapidjson::SizeType length, bool)
        {
            isName ? handler.Key({text, length}, copy) : handler.String({text, length}, copy);
            return true;
        }
        // There are only scalars, and numbers come as such.
        bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }
        bool StartObject() { return false; }
        bool Key(const char*, rapidjson::SizeType, bool) { return false; }
        bool EndObject(rapidjson::SizeType) { return false; }
        bool StartArray() { return false; }
        bool EndArray(rapidjson::SizeType) { return false; }

        Handler& handler;
        bool isName;
        bool copy;
    };

    bool MemberOrEnd()
    {
        Open& open = m_open.back();
        char next = m_cursor.SkipBlanks();
        if (next == open.end)
        {
            ++m_cursor.next;
            Close();
            return true;
        }
        if (open.members != 0)
        {
            if (next != ',')
            {
                return false;
            }
            ++m_cursor.next;
            next = m_cursor.SkipBlanks();
        }
        ++open.members;
        return (open.end == ']' || Name(next)) && Value();
    }

    bool Name(char next)
    {
        if (next != '"' || !Text<true>() || m_cursor.SkipBlanks() != ':')
        {
            return false;
        }
        ++m_cursor.next;
        m_cursor.SkipBlanks();
        return true;
    }

    bool Value()
    {
        if (m_handler.ReadsValue())
        {
            return m_handler.ReadValue(m_cursor);
        }
        switch (*m_cursor.next)
        {
        case '"':
            return Text<false>();
        case '{':
            ++m_cursor.next;
            m_open.push_back({'}', 0});
            m_handler.StartObject();
            return true;
        case '[':
            ++m_cursor.next;
            m_open.push_back({']', 0});
            m_handler.StartArray();
            return true;
        default:
            return Integer() || Other(false);
        }
    }

    void Close()
    {
        const Open closed = m_open.back();
        m_open.pop_back();
        closed.end == '}' ? m_handler.EndObject(closed.members) : m_handler.EndArray(closed.members);
    }

    template <bool isName>
    bool Text()
    {
        char* const first = m_cursor.next + 1;
        char* const end = JsonCursor::FindSpecial(first);
        if (*end != '"')
        {
            return Other(isName);
        }
        m_cursor.next = end + 1;
        const std::string_view text(first, static_cast<std::size_t>(end - first));
        isName ? m_handler.Key(text, !m_cursor.IsWhole()) : m_handler.String(text, !m_cursor.IsWhole());
        return true;
    }

    /// False, and nothing is read, if it may be anything but an integer of few digits.
    bool Integer()
    {
        constexpr int kDigits = 18;
        char* at = m_cursor.next;
        const bool isNegative = *at == '-';
        at += isNegative ? 1 : 0;
        const char* const first = at;
        std::int64_t value = 0;
        while (IsDigit(*at) && at - first < kDigits)
        {
            value = 10 * value + (*at++ - '0');
        }
        const bool isPlain = at != first && (*first != '0' || at - first == 1);
        // More digits, a fraction or an exponent may follow, behind the end of what is here, too.
        if (!isPlain || IsDigit(*at) || *at == '.' || *at == 'e' || *at == 'E' || *at == '\0')
        {
            return false;
        }
        m_cursor.next = at;
        m_handler.Int64(isNegative ? -value : value);
        return true;
    }

    bool Other(bool isName)
    {
        while (FindEndOfScalar() == m_cursor.End() && m_cursor.More())
        {}
        constexpr unsigned kOneInPlace = rapidjson::kParseInsituFlag | rapidjson::kParseStopWhenDoneFlag;
        Forward forward{m_handler, isName, !m_cursor.IsWhole()};
        rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, JsonMemory> reader;
        rapidjson::InsituStringStream stream(m_cursor.next);
        reader.template Parse<kOneInPlace>(stream, forward);
        m_cursor.next += stream.Tell();
        return !reader.HasParseError();
    }

    /// Where the value ends that is no plain one; the end of what is here only if it may go on behind it,
    /// since an input is asked for more only when the document needs it.
    const char* FindEndOfScalar() const
    {
        const char first = *m_cursor.next;
        return first == '"'                     ? FindEndOfText()
               : first == '-' || IsDigit(first) ? FindEndOfNumber()
                                                : FindEndOfWord();
    }

    const char* FindEndOfText() const
    {
        const char* const end = m_cursor.End();
        char* at = JsonCursor::FindSpecial(m_cursor.next + 1);
        while (*at == '\\')
        {
            if (at + 1 == end)
            {
                return end;
            }
            const std::ptrdiff_t length = at[1] == 'u' ? std::min<std::ptrdiff_t>(5, end - at - 1) : 1;
            if (!IsEscape({at + 1, static_cast<std::size_t>(length)}))
            {
                return at;
            }
            at = JsonCursor::FindSpecial(at + 2);
        }
        return at;
    }

    /// Whether an escape may begin so.
    static bool IsEscape(std::string_view letters)
    {
        constexpr std::string_view kHexadecimal = "0123456789abcdefABCDEF", kOther = "\"\\/bfnrt";
        return letters.front() == 'u' ? letters.find_first_not_of(kHexadecimal, 1) == std::string_view::npos
                                      : kOther.find(letters.front()) != std::string_view::npos;
    }

    const char* FindEndOfNumber() const
    {
        const auto skipDigits = [](const char* at) {
            while (IsDigit(*at))
            {
                ++at;
            }
            return at;
        };
        // RapidJSON takes none of so many digits before the point, whatever follows.
        constexpr std::ptrdiff_t kTooMany = 400;
        const char* at = skipDigits(m_cursor.next + 1);
        if (at - m_cursor.next > kTooMany)
        {
            return m_cursor.next;
        }
        if (*at == '.')
        {
            at = skipDigits(at + 1);
        }
        if (*at == 'e' || *at == 'E')
        {
            ++at;
            at = skipDigits(*at == '+' || *at == '-' ? at + 1 : at);
        }
        return at;
    }

    const char* FindEndOfWord() const
    {
        const char first = *m_cursor.next;
        const std::string_view word = first == 't'   ? "true"
                                      : first == 'f' ? "false"
                                      : first == 'n' ? "null"
                                                     : "";
        const std::string_view here(m_cursor.next, static_cast<std::size_t>(m_cursor.End() - m_cursor.next));
        const bool mayGoOn = here.size() < word.size() && word.substr(0, here.size()) == here;
        return here.empty() || mayGoOn ? m_cursor.End() : m_cursor.next;
    }

    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

    JsonCursor& m_cursor;
    Handler& m_handler;
    boost::container::small_vector<Open, 16> m_open;
};

} // namespace Zelnor::Core
