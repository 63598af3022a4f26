#include "Media/Batch/OutputNames.h"

#include "Media/MediaException.h"
#include "Media/Running/Files.h"

#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <set>

namespace Zelnor::Media
{

namespace
{

constexpr const char* kUnit = "Media/Batch/OutputNames";

std::string JobText(const BatchJob& job)
{
    return "job " + std::to_string(job.number) + " (input '" + job.input + "', preset '" + job.preset + "')";
}

/// What the names of files in a folder mean, also where the folder is still to be made.
class OutputIdentities
{
public:
    explicit OutputIdentities(const std::string& folder)
    {
        struct stat status = {};
        if (::stat(folder.c_str(), &status) != 0)
        {
            m_folds = FoldsCase(std::filesystem::path(folder).parent_path().string());
        }
    }

    std::string Of(const std::string& path) const
    {
        const std::string identity = FileIdentity(path);
        return m_folds ? FoldCase(identity) : identity;
    }

private:
    bool m_folds = false;
};

} // namespace

std::vector<std::string> CheckOutputs(const Batch& batch, const std::vector<std::string>& read)
{
    std::set<std::string> inputs;
    for (const std::string& path : read)
    {
        inputs.insert(FileIdentity(path));
    }
    const OutputIdentities identities(batch.PathOf(batch.outputFolder));
    std::map<std::string, unsigned int> makers;
    std::vector<std::string> existing;
    for (const BatchJob& job : batch.jobs)
    {
        if (!job.IsPlanned())
        {
            continue;
        }
        const std::string path = batch.PathOf(batch.OutputOf(job));
        const std::string identity = identities.Of(path);
        if (inputs.count(identity) != 0)
        {
            ZELNOR_THROW(kUnit, MakeError<PlanException>(JobText(job) + " would replace '" + path +
                                                         "', which the batch reads"));
        }
        const auto [maker, isNew] = makers.try_emplace(identity, job.number);
        if (!isNew)
        {
            ZELNOR_THROW(kUnit,
                         MakeError<PlanException>(
                             JobText(batch.JobOf(maker->second)) + " and " + JobText(job) +
                             " would both make '" + path +
                             "'; {parent}, {preset} or {number} in the name pattern tells them apart"));
        }
        struct stat status = {};
        if (::stat(path.c_str(), &status) == 0)
        {
            existing.push_back(path);
        }
    }
    return existing;
}

} // namespace Zelnor::Media
