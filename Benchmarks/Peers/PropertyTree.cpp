// Boost's property tree, whose values are texts.

#include "Benchmarks/Support/Job.h"
#include "Benchmarks/Support/Sizes.h"

#include <boost/property_tree/json_parser.hpp>
#include <boost/property_tree/ptree.hpp>

#include <sstream>

namespace Zelnor::Benchmarks
{
namespace
{

using boost::property_tree::ptree;

ptree Read(const std::string& json)
{
    std::istringstream stream(json);
    ptree tree;
    boost::property_tree::read_json(stream, tree);
    return tree;
}

void Load(benchmark::State& state)
{
    const std::string& json = GetJson(state.range(0));
    Measure(state, [&] { return Read(json); });
}
BENCHMARK(Load)->Name("Load/Boost ptree")->Apply(OfDocuments);

void Save(benchmark::State& state)
{
    const ptree tree = Read(GetJson(state.range(0)));
    Measure(state, [&] {
        std::ostringstream stream;
        boost::property_tree::write_json(stream, tree, false);
        return stream.str();
    });
}
BENCHMARK(Save)->Name("Save/Boost ptree")->Apply(OfDocuments);

} // namespace
} // namespace Zelnor::Benchmarks
