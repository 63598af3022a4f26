#pragma once

#include <algorithm>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// The graph as its rules state it, without a thought for speed: what the real one is compared with. The
/// records are integers named "r".
class NaiveGraph
{
public:
    struct Node
    {
        long long id;
        long long record;
        /// Tells nodes apart that have one identifier.
        int key;
    };

    struct Link
    {
        long long id;
        int source;
        int target;
        long long record;
    };

    std::optional<std::size_t> Find(long long id) const
    {
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            if (nodes[i].id == id)
            {
                return i;
            }
        }
        return std::nullopt;
    }

    std::optional<std::size_t> FindLink(long long from, long long to) const
    {
        for (std::size_t i = 0; i < links.size(); ++i)
        {
            if (links[i].source == nodes[*Find(from)].key && links[i].target == nodes[*Find(to)].key)
            {
                return i;
            }
        }
        return std::nullopt;
    }

    void Append(long long id, long long record) { nodes.push_back({id, record, nextKey++}); }

    void Append(long long id, long long from, long long to, long long record)
    {
        links.push_back({id, nodes[*Find(from)].key, nodes[*Find(to)].key, record});
    }

    std::size_t PositionOf(int key) const
    {
        std::size_t i = 0;
        while (nodes[i].key != key)
        {
            ++i;
        }
        return i;
    }

    /// The identifiers behind the links that leave (or reach) the node at a position.
    std::vector<long long> Neighbours(std::size_t position, bool outgoing) const
    {
        std::vector<long long> ids;
        for (const Link& link : links)
        {
            if ((outgoing ? link.source : link.target) == nodes[position].key)
            {
                ids.push_back(nodes[PositionOf(outgoing ? link.target : link.source)].id);
            }
        }
        return ids;
    }

    std::vector<long long> Without(bool outgoing) const
    {
        std::vector<long long> ids;
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            if (Neighbours(i, outgoing).empty())
            {
                ids.push_back(nodes[i].id);
            }
        }
        return ids;
    }

    std::vector<long long> Ids() const
    {
        std::vector<long long> ids;
        for (const Node& node : nodes)
        {
            ids.push_back(node.id);
        }
        return ids;
    }

    std::vector<std::pair<long long, long long>> LinkedIds() const
    {
        std::vector<std::pair<long long, long long>> ids;
        for (const Link& link : links)
        {
            ids.emplace_back(nodes[PositionOf(link.source)].id, nodes[PositionOf(link.target)].id);
        }
        return ids;
    }

    /// The ids that stand again behind their first place.
    std::vector<long long> RepeatedIds() const
    {
        std::vector<long long> repeated;
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            const bool stoodBefore = *Find(nodes[i].id) < i;
            if (stoodBefore && std::find(repeated.begin(), repeated.end(), nodes[i].id) == repeated.end())
            {
                repeated.push_back(nodes[i].id);
            }
        }
        return repeated;
    }

    std::vector<long long> UnlinkedIds() const
    {
        std::vector<long long> ids;
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            if (Neighbours(i, true).empty() && Neighbours(i, false).empty())
            {
                ids.push_back(nodes[i].id);
            }
        }
        return ids;
    }

    /// The linked nodes of each connected part.
    std::vector<std::vector<long long>> Parts() const
    {
        const Closure either = Reached(true);
        return Classes([&either](std::size_t a, std::size_t b) { return either[a][b] && either[b][b]; });
    }

    /// The nodes of each set in which each lies on a cycle with each.
    std::vector<std::vector<long long>> CyclicParts() const
    {
        const Closure directed = Reached(false);
        return Classes(
            [&directed](std::size_t a, std::size_t b) { return directed[a][b] && directed[b][a]; });
    }

    /// By the closure of the links: a cycle is a node that reaches itself, and a graph is connected when
    /// everything is reached both ways.
    bool IsValid() const
    {
        const std::size_t count = nodes.size();
        const Closure directed = Reached(false);
        const Closure either = Reached(true);
        bool valid = count >= 2;
        for (std::size_t i = 0; i < count; ++i)
        {
            valid = valid && !directed[i][i] &&
                    std::find(either[i].begin(), either[i].end(), false) == either[i].end();
        }
        return valid;
    }

    /// `from` exists.
    bool HasPath(long long from, long long to) const
    {
        std::deque<long long> queue{from};
        std::vector<long long> visited;
        while (!queue.empty())
        {
            const long long id = queue.front();
            queue.pop_front();
            if (id == to)
            {
                return true;
            }
            visited.push_back(id);
            for (const long long output : Neighbours(*Find(id), true))
            {
                if (std::find(visited.begin(), visited.end(), output) == visited.end() &&
                    std::find(queue.begin(), queue.end(), output) == queue.end())
                {
                    queue.push_back(output);
                }
            }
        }
        return false;
    }

    std::string Json() const
    {
        std::string text = "{\"vertices\":[";
        for (const Node& node : nodes)
        {
            text += (&node == nodes.data() ? "" : ",") + ("{\"id\":" + std::to_string(node.id)) +
                    Data(node.record);
        }
        text += "],\"edges\":[";
        for (const Link& link : links)
        {
            text += (&link == links.data() ? "" : ",") + ("{\"id\":" + std::to_string(link.id)) +
                    ",\"from\":" + std::to_string(nodes[PositionOf(link.source)].id) +
                    ",\"to\":" + std::to_string(nodes[PositionOf(link.target)].id) + Data(link.record);
        }
        return text + "]}";
    }

    std::string Dot() const
    {
        std::string text = "digraph G {\n";
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            text += std::to_string(i) + "[label=\"Node Id: " + std::to_string(nodes[i].id) +
                    "\nr: " + std::to_string(nodes[i].record) + "\n\"];\n";
        }
        for (const Link& link : links)
        {
            text += std::to_string(PositionOf(link.source)) + "->" + std::to_string(PositionOf(link.target)) +
                    " [label=\"r: " + std::to_string(link.record) + "\n\"];\n";
        }
        return text + "}\n";
    }

    std::vector<Node> nodes;
    std::vector<Link> links;
    long long nodeCounter = 0;
    long long linkCounter = 0;
    int nextKey = 0;

private:
    using Closure = std::vector<std::vector<bool>>;

    /// Which position reaches which along one link or more, or along links taken either way.
    Closure Reached(bool eitherWay) const
    {
        Closure reaches(nodes.size(), std::vector<bool>(nodes.size()));
        for (const Link& link : links)
        {
            const std::size_t source = PositionOf(link.source);
            const std::size_t target = PositionOf(link.target);
            reaches[source][target] = true;
            reaches[target][source] = reaches[target][source] || eitherWay;
        }
        Close(reaches);
        return reaches;
    }

    /// The classes of the nodes that are together with themselves, in the order of their first nodes.
    template <class Together>
    std::vector<std::vector<long long>> Classes(Together&& together) const
    {
        std::vector<std::vector<long long>> classes;
        for (std::size_t first = 0; first < nodes.size(); ++first)
        {
            std::vector<long long> ids;
            bool isFirst = true;
            for (std::size_t other = 0; other < nodes.size(); ++other)
            {
                if (together(first, other))
                {
                    isFirst = isFirst && other >= first;
                    ids.push_back(nodes[other].id);
                }
            }
            if (isFirst && !ids.empty())
            {
                classes.push_back(ids);
            }
        }
        return classes;
    }

    static void Close(Closure& reaches)
    {
        for (std::size_t via = 0; via < reaches.size(); ++via)
        {
            for (std::size_t from = 0; from < reaches.size(); ++from)
            {
                for (std::size_t to = 0; reaches[from][via] && to < reaches.size(); ++to)
                {
                    reaches[from][to] = reaches[from][to] || reaches[via][to];
                }
            }
        }
    }

    static std::string Data(long long record)
    {
        return ",\"data\":{\"data\":{\"r\":" + std::to_string(record) + "}}}";
    }
};

} // namespace Zelnor::Testing
