#include "Tools/zconf/Commands/PlaceJson.h"

namespace Zelnor::Tool
{

void WritePlace(const Media::Place& place, JsonOutput& output)
{
    if (place.node)
    {
        output.Key("node");
        output.GetWriter().Int64(*place.node);
    }
    if (place.link)
    {
        output.Key("link");
        output.Integers({place.link->first, place.link->second});
    }
    if (!place.streamKind.empty())
    {
        output.Key("stream_kind");
        output.String(place.streamKind);
    }
    if (place.stream)
    {
        output.Key("stream");
        output.GetWriter().Uint(*place.stream);
    }
    if (!place.key.empty())
    {
        output.Key("key");
        output.String(place.key);
    }
}

} // namespace Zelnor::Tool
