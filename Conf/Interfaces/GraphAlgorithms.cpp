#include "Conf/Interfaces/GraphAlgorithms.h"

#include "Core/Interfaces/Exception.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <unordered_set>

namespace Zelnor::Conf
{

namespace
{

constexpr const char* kUnit = "Conf/Interfaces/GraphAlgorithms";

/// Identifiers are usually small, since they are counted from 1; then one bit for each is enough. A document
/// may contain any others.
class IdSet
{
public:
    /// Returns whether the identifier was not in the set yet.
    bool Insert(NodeId id)
    {
        constexpr NodeId kMostBits = 1 << 24;
        if (id < 0 || id >= kMostBits)
        {
            return m_others.insert(id).second;
        }
        const auto bit = static_cast<std::size_t>(id);
        if (bit >= m_bits.size())
        {
            m_bits.resize(std::max(bit + 1, 2 * m_bits.size()));
        }
        const bool inserted = !m_bits[bit];
        m_bits[bit] = true;
        return inserted;
    }

private:
    std::vector<bool> m_bits;
    std::unordered_set<NodeId> m_others;
};

} // namespace

bool PathExistInGraph(const boost::intrusive_ptr<const ITranscodingMetaGraph>& graph, NodeId from, NodeId to)
{
    if (graph == nullptr)
    {
        ZELNOR_THROW(kUnit, std::invalid_argument("graph is NULL"));
    }
    // Nodes are marked when they are queued, not when they are visited: many paths may lead to one node.
    IdSet queued;
    queued.Insert(from);
    std::vector<NodeId> queue{from};
    std::vector<NodeId> outputs;
    for (std::size_t next = 0; next < queue.size(); ++next)
    {
        if (queue[next] == to)
        {
            return true;
        }
        outputs.clear();
        graph->Outputs(queue[next], outputs);
        std::copy_if(outputs.begin(), outputs.end(), std::back_inserter(queue),
                     [&queued](NodeId output) { return queued.Insert(output); });
    }
    return false;
}

} // namespace Zelnor::Conf
