#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

using Row = std::vector<std::string>;

/// The rows of a table in `Tests/Conf/Data`, cells separated by tabs. The listings there were not made from
/// the library's own lists, so that the two check each other.
inline std::vector<Row> ReadListing(const std::string& name)
{
    const std::string path = std::string(ZELNOR_SOURCE_DIR) + "/Tests/Conf/Data/" + name;
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    std::vector<Row> rows;
    for (std::string line; std::getline(file, line);)
    {
        Row row;
        std::string::size_type begin = 0;
        for (auto end = line.find('\t'); end != std::string::npos; end = line.find('\t', begin))
        {
            row.push_back(line.substr(begin, end - begin));
            begin = end + 1;
        }
        row.push_back(line.substr(begin));
        rows.push_back(row);
    }
    return rows;
}

} // namespace Zelnor::Testing
