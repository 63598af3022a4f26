#pragma once

#include "Conf/Interfaces/ConfException.h"
#include "Conf/Interfaces/GraphAlgorithms.h"
#include "Conf/Interfaces/ITranscodingMetaGraph.h"
#include "Core/Interfaces/DataStream.h"
#include "Tests/Support/Expect.h"

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

using GraphPtr = boost::intrusive_ptr<Conf::ITranscodingMetaGraph>;
using Ids = std::vector<Conf::NodeId>;
using IdPairs = std::vector<std::pair<Conf::NodeId, Conf::NodeId>>;

inline std::string JsonOf(const Conf::ITranscodingMetaGraph& graph)
{
    const auto out = Core::MemoryDataOutput::Create();
    graph.Save(out);
    return out->GetData();
}

inline std::string DotOf(const Conf::ITranscodingMetaGraph& graph)
{
    const auto out = Core::MemoryDataOutput::Create();
    graph.SaveInToDot(out);
    return out->GetData();
}

inline void LoadInto(Conf::ITranscodingMetaGraph& graph, const std::string& json)
{
    graph.Load(Core::MemoryDataInput::Create(json));
}

inline GraphPtr Loaded(const std::string& json)
{
    GraphPtr graph = Conf::ITranscodingMetaGraph::Create();
    LoadInto(*graph, json);
    return graph;
}

inline Ids NodesOf(const Conf::ITranscodingMetaGraph& graph)
{
    Ids ids;
    graph.Nodes(ids);
    return ids;
}

inline IdPairs LinksOf(const Conf::ITranscodingMetaGraph& graph)
{
    IdPairs links;
    graph.Links(links);
    return links;
}

inline Ids InputsOf(const Conf::ITranscodingMetaGraph& graph, Conf::NodeId id)
{
    Ids ids;
    graph.Inputs(id, ids);
    return ids;
}

inline Ids OutputsOf(const Conf::ITranscodingMetaGraph& graph, Conf::NodeId id)
{
    Ids ids;
    graph.Outputs(id, ids);
    return ids;
}

inline Ids EntriesOf(const Conf::ITranscodingMetaGraph& graph)
{
    Ids ids;
    graph.Inputs(ids);
    return ids;
}

inline Ids ExitsOf(const Conf::ITranscodingMetaGraph& graph)
{
    Ids ids;
    graph.Outputs(ids);
    return ids;
}

/// A graph with the nodes 1 to `count`, whose records are named "n" and hold their identifiers.
inline GraphPtr GraphWithNodes(int count)
{
    GraphPtr graph = Conf::ITranscodingMetaGraph::Create();
    for (long long i = 1; i <= count; ++i)
    {
        graph->AddNode(Core::Property("n", i));
    }
    return graph;
}

inline void Link(Conf::ITranscodingMetaGraph& graph, const IdPairs& links)
{
    for (const auto& [from, to] : links)
    {
        graph.AddLink(from, to, Core::Property());
    }
}

/// Expects an `E` thrown by `function` of the graph's own unit, with a call stack.
template <class E, class Action>
Thrown ExpectGraphThrow(const char* function, Action&& action, const char* file = __builtin_FILE(),
                        int line = __builtin_LINE())
{
    Thrown thrown = ExpectThrow<E>(std::forward<Action>(action), file, line);
    if (thrown.file != "Conf/Interfaces/ITranscodingMetaGraph" || thrown.line.value_or(0) <= 0 ||
        thrown.callStack.value_or("").empty() ||
        thrown.function.value_or("").find(function) == std::string::npos)
    {
        ADD_FAILURE_AT(file, line) << "not thrown by " << function << ": " << thrown.diagnostics;
    }
    return thrown;
}

template <class Action>
void ExpectNodeNotFound(Conf::NodeId id, Action&& action, const char* file = __builtin_FILE(),
                        int line = __builtin_LINE())
{
    const Thrown thrown = ExpectGraphThrow<Conf::NodeNotFound>("GrahpImpl::VertexById(",
                                                               std::forward<Action>(action), file, line);
    if (thrown.Get<Conf::ProfileException::TagRequestedNodeId>() != id)
    {
        ADD_FAILURE_AT(file, line) << "expected the node " << id << ": " << thrown.diagnostics;
    }
}

/// Expects `E`, a failure of the link (from, to), thrown by `function`.
template <class E, class Action>
void ExpectLinkFailure(const char* function, std::pair<long long, long long> link, Action&& action,
                       const char* file = __builtin_FILE(), int line = __builtin_LINE())
{
    const Thrown thrown = ExpectGraphThrow<E>(function, std::forward<Action>(action), file, line);
    if (thrown.template Get<Conf::ProfileException::TagRequestedLink>() != link)
    {
        ADD_FAILURE_AT(file, line) << "expected the link " << link.first << "->" << link.second << ": "
                                   << thrown.diagnostics;
    }
}

template <class Action>
void ExpectBadJson(const std::string& what, Action&& action, const char* file = __builtin_FILE(),
                   int line = __builtin_LINE())
{
    const Thrown thrown =
        ExpectGraphThrow<Conf::BadJson>("GrahpImpl::Load(", std::forward<Action>(action), file, line);
    if (thrown.Get<Conf::ProfileException::TagJsonBadStructure>() != what || thrown.description)
    {
        ADD_FAILURE_AT(file, line) << "expected \"" << what << "\" alone: " << thrown.diagnostics;
    }
}

} // namespace Zelnor::Testing
