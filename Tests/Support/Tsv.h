#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// The rows of a file of tab-separated values below the sources' root. Lines that begin with '#' are
/// comments.
inline std::vector<std::vector<std::string>> ReadTsv(const std::string& path)
{
    std::ifstream file(ZELNOR_SOURCE_DIR "/" + path);
    if (!file)
    {
        ADD_FAILURE() << "cannot read " << path;
    }
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(file, line);)
    {
        if (line.empty() || line[0] == '#')
        {
            continue;
        }
        std::vector<std::string> row;
        for (std::size_t begin = 0; begin <= line.size();)
        {
            const std::size_t end = std::min(line.find('\t', begin), line.size());
            row.push_back(line.substr(begin, end - begin));
            begin = end + 1;
        }
        rows.push_back(row);
    }
    return rows;
}

} // namespace Zelnor::Testing
