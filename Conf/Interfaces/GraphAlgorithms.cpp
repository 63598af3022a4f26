#include "Conf/Interfaces/GraphAlgorithms.h"

#include "Core/Interfaces/Exception.h"

#include <queue>
#include <stdexcept>
#include <unordered_set>

namespace Zelnor::Conf
{

bool PathExistInGraph(const boost::intrusive_ptr<const ITranscodingMetaGraph>& graph, NodeId from, NodeId to)
{
    if (graph == nullptr)
    {
        ZELNOR_THROW(std::invalid_argument("graph is NULL"));
    }
    std::queue<NodeId> pending;
    // Marked when they are queued, not when they are taken: many ways may lead to one node.
    std::unordered_set<NodeId> queued{from};
    std::vector<NodeId> outputs;
    pending.push(from);
    while (!pending.empty())
    {
        const NodeId id = pending.front();
        pending.pop();
        if (id == to)
        {
            return true;
        }
        outputs.clear();
        graph->Outputs(id, outputs);
        for (const NodeId output : outputs)
        {
            if (queued.insert(output).second)
            {
                pending.push(output);
            }
        }
    }
    return false;
}

} // namespace Zelnor::Conf
