#include "Media/Options/OptionValue.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Options/VideoWords.h"
#include "Media/ValueText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <vector>

namespace Zelnor::Media
{

namespace
{

using Core::Property;

/// A number as FFmpeg reads it from a text.
struct Number
{
    double value = 0;
    bool isInteger = false;
};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// What a number is multiplied with; 0 when the suffix is not one.
double FactorOf(std::string_view suffix)
{
    constexpr double kKilo = 1e3;
    constexpr double kMega = 1e6;
    constexpr double kGiga = 1e9;
    return suffix.empty()                   ? 1
           : suffix == "k" || suffix == "K" ? kKilo
           : suffix == "M"                  ? kMega
           : suffix == "G"                  ? kGiga
                                            : 0;
}

/// "12", "-1.5", "+3", "800k". No expressions: what they do is more than to be a number.
std::optional<Number> ParseNumber(std::string_view text)
{
    const bool isSigned = !text.empty() && (text[0] == '+' || text[0] == '-');
    const std::string_view digits = text.substr(isSigned ? 1 : 0);
    if (digits.empty() || !IsDigit(digits[0]))
    {
        return std::nullopt;
    }
    double value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [last, error] = std::from_chars(digits.data(), end, value, std::chars_format::fixed);
    const double factor = FactorOf(std::string_view(last, static_cast<std::size_t>(end - last)));
    if (error != std::errc() || factor == 0)
    {
        return std::nullopt;
    }
    value *= isSigned && text[0] == '-' ? -factor : factor;
    return Number{value, std::isfinite(value) && std::trunc(value) == value};
}

bool IsConstantOf(const FoundOption& found, const AVClass* owner, std::string_view name)
{
    const AVClass* object = owner;
    return owner != nullptr && found.option->unit != nullptr &&
           av_opt_find(&object, std::string(name).c_str(), found.option->unit, 0, AV_OPT_SEARCH_FAKE_OBJ) !=
               nullptr;
}

bool IsConstant(const FoundOption& found, std::string_view name)
{
    return name.find('\0') == std::string_view::npos &&
           (IsConstantOf(found, found.owner, name) || IsConstantOf(found, found.codec, name));
}

/// FFmpeg's names for values of the option, in its order: "none, simple, rd".
std::string ConstantsText(const FoundOption& found)
{
    std::string text;
    for (const AVClass* owner : {found.owner, found.codec == found.owner ? nullptr : found.codec})
    {
        const AVOption* each = nullptr;
        while (owner != nullptr && found.option->unit != nullptr &&
               (each = av_opt_next(&owner, each)) != nullptr)
        {
            if (each->type == AV_OPT_TYPE_CONST && each->unit != nullptr &&
                std::string_view(each->unit) == found.option->unit &&
                IsAllowedFlag(found.option->name, each->name))
            {
                text += (text.empty() ? "" : ", ") + std::string(each->name);
            }
        }
    }
    return text;
}

bool IsInteger(AVOptionType type)
{
    return type == AV_OPT_TYPE_INT || type == AV_OPT_TYPE_INT64 || type == AV_OPT_TYPE_UINT64;
}

std::string RangeText(const AVOption& option)
{
    // Beyond these, a double or a person does not tell one number from the next.
    constexpr double kWide = 9e15;
    const std::string what = IsInteger(option.type) ? "an integer" : "a number";
    if (option.min < -kWide || option.max > kWide)
    {
        return what;
    }
    const auto text = [](double bound) {
        char digits[32];
        const auto end = std::to_chars(digits, digits + sizeof digits, bound, std::chars_format::general, 16);
        return std::string(digits, end.ptr);
    };
    return what + " from " + text(option.min) + " to " + text(option.max);
}

std::string Expected(const FoundOption& found)
{
    const std::string constants = ConstantsText(found);
    switch (found.option->type)
    {
    case AV_OPT_TYPE_FLAGS:
        return constants.empty() ? "no flags" : "names among " + constants + ", as +a-b";
    case AV_OPT_TYPE_BOOL:
        return "true or false";
    case AV_OPT_TYPE_IMAGE_SIZE:
        return "a size as 2x1";
    case AV_OPT_TYPE_CHLAYOUT:
        return "a channel layout as stereo";
    default:
        return RangeText(*found.option) + (constants.empty() ? "" : " or one of " + constants);
    }
}

bool IsInRange(const AVOption& option, const Number& number)
{
    return std::isfinite(number.value) && number.value >= option.min && number.value <= option.max;
}

bool IsTruth(const AVOption& option, std::string_view text)
{
    const auto number = ParseNumber(text);
    return text == "true" || text == "false" || (text == "auto" && option.min < 0) ||
           (number && number->isInteger && IsInRange(option, *number));
}

/// "fast", "+fast-noout"
bool AreFlags(const FoundOption& found, std::string_view text)
{
    while (!text.empty())
    {
        text.remove_prefix(text[0] == '+' || text[0] == '-' ? 1 : 0);
        const std::size_t end = std::min(text.find_first_of("+-"), text.size());
        const std::string_view name = text.substr(0, end);
        if (!IsConstant(found, name) || !IsAllowedFlag(found.option->name, name))
        {
            return false;
        }
        text.remove_prefix(end);
        if (text.size() == 1)
        {
            return false;
        }
    }
    return true;
}

bool IsSize(std::string_view text)
{
    const std::size_t cross = text.find('x');
    constexpr std::size_t kMostDigits = 5;
    const auto isLength = [](std::string_view part) {
        return !part.empty() && part.size() <= kMostDigits && std::all_of(part.begin(), part.end(), IsDigit);
    };
    return cross != std::string_view::npos && isLength(text.substr(0, cross)) &&
           isLength(text.substr(cross + 1));
}

bool IsLayout(std::string_view text)
{
    return !text.empty() &&
           text.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789.()") == std::string_view::npos;
}

bool IsNumber(const FoundOption& found, std::string_view text, bool mustBeInteger)
{
    // FFmpeg, too, looks for a name first: ProRes has a profile that is called 4444.
    if (IsConstant(found, text))
    {
        return true;
    }
    const auto number = ParseNumber(text);
    return number && (number->isInteger || !mustBeInteger) && IsInRange(*found.option, *number);
}

/// "30000/1001"
bool IsFraction(const FoundOption& found, std::string_view text)
{
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos)
    {
        return IsNumber(found, text, false);
    }
    const auto isTerm = [](std::string_view term) {
        constexpr double kMost = INT32_MAX;
        const auto number = ParseNumber(term);
        return number && number->isInteger && number->value >= 1 && number->value <= kMost;
    };
    return isTerm(text.substr(0, slash)) && isTerm(text.substr(slash + 1));
}

bool IsValue(const FoundOption& found, std::string_view text)
{
    switch (found.option->type)
    {
    case AV_OPT_TYPE_FLAGS:
        // The numbers of an option that every codec has reach flags that are not allowed.
        return !text.empty() && AreFlags(found, text);
    case AV_OPT_TYPE_INT:
    case AV_OPT_TYPE_INT64:
    case AV_OPT_TYPE_UINT64:
        return IsNumber(found, text, true);
    case AV_OPT_TYPE_DOUBLE:
    case AV_OPT_TYPE_FLOAT:
        return IsNumber(found, text, false);
    case AV_OPT_TYPE_RATIONAL:
        return IsFraction(found, text);
    case AV_OPT_TYPE_BOOL:
        return IsTruth(*found.option, text);
    case AV_OPT_TYPE_IMAGE_SIZE:
        return IsSize(text);
    case AV_OPT_TYPE_CHLAYOUT:
        return IsLayout(text);
    default:
        return false;
    }
}

std::string TextOf(const Property& value)
{
    switch (value.GetType())
    {
    case PROPERTY_TYPE_INT64:
        return std::to_string(value.GetInt64());
    case PROPERTY_TYPE_STRING:
        return value.GetString();
    case PROPERTY_TYPE_RATIO:
        return value.GetRatio().denominator() == 1 ? std::to_string(value.GetRatio().numerator())
                                                   : ValueText(value);
    case PROPERTY_TYPE_NONE:
    case PROPERTY_TYPE_GROUP:
        break;
    }
    return "";
}

CheckedOption Expectation(const std::string& expected, const Property& found)
{
    return {"", "expected " + expected + ", found " + ValueText(found)};
}

bool IsWord(const TextRule& rule, const std::string& text)
{
    std::size_t begin = 0;
    while (begin <= text.size())
    {
        const std::size_t end = rule.characters.empty()
                                    ? text.size()
                                    : std::min(text.find_first_of(rule.characters, begin), text.size());
        if (!IsVideoWord(rule.words, text.substr(begin, end - begin)))
        {
            return false;
        }
        begin = end + 1;
    }
    return true;
}

/// Numbers, between which there may be commas, and what the libraries call some of them.
bool IsParameterNumber(std::string_view text)
{
    for (const std::string_view name : {"auto", "infinite", "none", "true", "false"})
    {
        if (text == name)
        {
            return true;
        }
    }
    while (!text.empty())
    {
        const std::size_t end = std::min(text.find(','), text.size());
        const auto number = ParseNumber(text.substr(0, end));
        if (!number || !std::isfinite(number->value) || end + 1 == text.size())
        {
            return false;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
        if (text.empty())
        {
            return true;
        }
    }
    return false;
}

bool IsParameterWord(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                                   "0123456789.,()-") == std::string_view::npos;
}

/// "keyint=50"; without a value the library is given 1.
struct Parameter
{
    std::string name;
    std::string value = "1";
};

std::vector<Parameter> SplitParameters(const std::string& text)
{
    std::vector<Parameter> parameters;
    for (std::size_t begin = 0; begin <= text.size();)
    {
        const std::size_t end = std::min(text.find(':', begin), text.size());
        const std::string entry = text.substr(begin, end - begin);
        const std::size_t equals = entry.find('=');
        Parameter parameter = {entry.substr(0, equals)};
        if (equals != std::string::npos)
        {
            parameter.value = entry.substr(equals + 1);
        }
        parameters.push_back(parameter);
        begin = end + 1;
    }
    return parameters;
}

std::string ParameterFault(const ParametersRule& rule, const Parameter& parameter)
{
    const std::string named = std::string(rule.library) + "'s parameter '" + parameter.name + "'";
    if (rule.isNumber(parameter.name))
    {
        return IsParameterNumber(parameter.value)
                   ? ""
                   : named + ": expected a number, found '" + parameter.value + "'";
    }
    if (rule.isWord(parameter.name))
    {
        const WordRule* const words = FindWordRule(parameter.name);
        return (words == nullptr ? IsParameterWord(parameter.value) : words->Accepts(parameter.value))
                   ? ""
                   : named + ": expected " + (words == nullptr ? "a word" : words->expected) + ", found '" +
                         parameter.value + "'";
    }
    return named + " cannot be set by a job or a preset";
}

} // namespace

CheckedOption CheckOptionValue(const FoundOption& found, const Property& value)
{
    const std::string text = TextOf(value);
    return IsValue(found, text) ? CheckedOption{text, ""} : Expectation(Expected(found), value);
}

CheckedOption CheckText(const TextRule& rule, const Property& value)
{
    const std::string text = TextOf(value);
    const auto isAllowed = [&rule](char c) {
        return IsDigit(c) || rule.characters.find(c) != std::string_view::npos;
    };
    const bool isRight = rule.words.empty()
                             ? !text.empty() && std::all_of(text.begin(), text.end(), isAllowed)
                             : IsWord(rule, text);
    return isRight ? CheckedOption{text, ""} : Expectation(rule.expected, value);
}

CheckedOption CheckParameters(const ParametersRule& rule, const Property& value)
{
    if (value.GetType() != PROPERTY_TYPE_STRING)
    {
        return Expectation(std::string("parameters of ") + rule.library + " as a=1:b=2", value);
    }
    CheckedOption checked;
    std::set<std::string> seen;
    for (const Parameter& parameter : SplitParameters(value.GetString()))
    {
        const std::string fault =
            !seen.insert(parameter.name).second
                ? std::string(rule.library) + "'s parameter '" + parameter.name + "' appears more than once"
                : ParameterFault(rule, parameter);
        if (!fault.empty())
        {
            return {"", fault};
        }
        checked.value += (checked.value.empty() ? "" : ":") + parameter.name + "=" + parameter.value;
    }
    return checked;
}

} // namespace Zelnor::Media
