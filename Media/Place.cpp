#include "Media/Place.h"

namespace Zelnor::Media
{

std::string Place::TextInDocument() const
{
    std::string text;
    const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (node)
    {
        add("node " + std::to_string(*node));
    }
    if (link)
    {
        add("link " + std::to_string(link->first) + " -> " + std::to_string(link->second));
    }
    if (stream)
    {
        add((streamKind.empty() ? "" : streamKind + " ") + "stream " + std::to_string(*stream));
    }
    if (!key.empty())
    {
        add(key);
    }
    return text;
}

std::string Place::Text() const
{
    const std::string inside = TextInDocument();
    return file + (file.empty() || inside.empty() ? "" : ": ") + inside;
}

Place Place::At(const std::string& otherKey) const
{
    Place place = *this;
    place.key = otherKey;
    return place;
}

Place Place::Under(const std::string& innerKey) const
{
    return At(key.empty() ? innerKey : key + "." + innerKey);
}

} // namespace Zelnor::Media
