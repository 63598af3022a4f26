#include "Media/Batch/NamePattern.h"

#include "Media/Batch/BatchRecord.h"
#include "Media/MediaException.h"
#include "Media/NearestNames.h"

#include <climits>
#include <utility>
#include <vector>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Batch/NamePattern";

/// A placeholder and what stands for it.
using Field = std::pair<const char*, std::string NameFields::*>;
constexpr Field kFields[] = {{"stem", &NameFields::stem},
                             {"ext", &NameFields::ext},
                             {"preset", &NameFields::preset},
                             {"number", &NameFields::number},
                             {"parent", &NameFields::parent}};

[[noreturn]] void RefusePattern(const std::string& pattern, const std::string& reason)
{
    ZELNOR_THROW(kUnit, MakeError<PlanException>("the name pattern '" + pattern + "': " + reason));
}

const std::string& FieldOf(const std::string& pattern, const std::string& name, const NameFields& fields)
{
    std::vector<std::string> known;
    std::string list;
    for (const Field& field : kFields)
    {
        if (name == field.first)
        {
            return fields.*field.second;
        }
        known.emplace_back(field.first);
        list += (list.empty() ? "{" : ", {") + known.back() + "}";
    }
    RefusePattern(pattern,
                  "unknown placeholder '{" + name + "}' (known: " + list + ")" + DidYouMean(name, known));
}

} // namespace

std::string ApplyNamePattern(const std::string& pattern, const NameFields& fields)
{
    std::string name;
    for (std::size_t i = 0; i < pattern.size();)
    {
        if (pattern[i] == '}')
        {
            RefusePattern(pattern, "'}' without '{' before it");
        }
        if (pattern[i] != '{')
        {
            name += pattern[i++];
            continue;
        }
        const std::size_t end = pattern.find('}', i);
        if (end == std::string::npos)
        {
            RefusePattern(pattern, "'{' without '}' after it");
        }
        name += FieldOf(pattern, pattern.substr(i + 1, end - i - 1), fields);
        i = end + 1;
    }
    while (!name.empty() && name.back() == '.')
    {
        name.pop_back();
    }
    if (!IsFileName(name) || name.size() > NAME_MAX)
    {
        RefusePattern(pattern, "'" + name + "' cannot be the name of a file");
    }
    return name;
}

void CheckNamePattern(const std::string& pattern)
{
    if (pattern.find('/') != std::string::npos)
    {
        RefusePattern(pattern, "it holds a '/', and all outputs are in one folder");
    }
    ApplyNamePattern(pattern, {"s", "e", "p", "n", "f"});
}

} // namespace Zelnor::Media
