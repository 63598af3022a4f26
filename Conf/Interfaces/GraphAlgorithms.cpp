#include "Conf/Interfaces/GraphAlgorithms.h"

#include "Conf/Private/GrahpImpl.h"
#include "Core/Interfaces/Exception.h"

#include <stdexcept>

namespace Zelnor::Conf
{

namespace
{

constexpr const char* kUnit = "Conf/Interfaces/GraphAlgorithms";

} // namespace

bool PathExistInGraph(const boost::intrusive_ptr<const ITranscodingMetaGraph>& graph, NodeId from, NodeId to)
{
    if (graph == nullptr)
    {
        ZELNOR_THROW(kUnit, std::invalid_argument("graph is NULL"));
    }
    return graph->m_impl->PathExists(from, to);
}

} // namespace Zelnor::Conf
