#pragma once

#include "Conf/Interfaces/ITranscodingMetaGraph.h"

#include <string>
#include <utility>
#include <vector>

/// \file
/// The work that all measure: a job of nodes with records of 22 properties, and half again as many links with
/// records of 3.

namespace Zelnor::Benchmarks
{

using Graph = boost::intrusive_ptr<Conf::ITranscodingMetaGraph>;
using Pairs = std::vector<std::pair<long long, long long>>;

/// Properties of a node's record, with the record itself.
constexpr int kNodeProperties = 22;

/// A value or a group, for all that build the same record.
struct Field
{
    enum Kind
    {
        TEXT,
        NUMBER,
        RATIO, ///< `number` / `denominator`
        GROUP,
    };

    std::string name;
    Kind kind = GROUP;
    std::string text = {};
    long long number = 0;
    long long denominator = 1;
    std::vector<Field> members = {};
};

/// The record of a video stream: eleven values and two groups of four.
const std::vector<Field>& GetNodeFields();
/// A group made of them.
Core::Property MakeNodeRecord();
/// The settings of a link: two values.
Core::Property MakeLinkRecord();

/// A chain of the nodes from 1 with a link over every other one.
Pairs MakeLinks(long long nodes);
Graph MakeJob(long long nodes);
/// The same job, kept.
const Graph& GetJob(long long nodes);
/// Its document, kept.
const std::string& GetJson(long long nodes);

} // namespace Zelnor::Benchmarks
