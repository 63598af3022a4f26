#include "Media/Batch/Batch.h"

#include "Media/Batch/BatchFolder.h"
#include "Media/Batch/BatchRecord.h"
#include "Media/Batch/RecordMembers.h"
#include "Media/MediaException.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <set>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;
using Core::Property;

constexpr const char* kUnit = "Media/Batch/Batch";

constexpr std::int64_t kVersion = 1;
constexpr std::int64_t kMostInteger = std::numeric_limits<std::int64_t>::max();

[[noreturn]] void RefuseBatch(const Place& place, const std::string& reason)
{
    ZELNOR_THROW(kUnit, MakeError<JobException>(place, reason));
}

std::string PathMember(const RecordMembers& members, const std::string& key)
{
    std::string path = members.Text(key);
    if (!IsKeptPath(path))
    {
        RefuseBatch(members.At(key),
                    "expected a path that is absolute, or relative with '..' only at its beginning, found '" +
                        path + "'");
    }
    return path;
}

Property RecordOf(const BatchJob& job)
{
    Property record(NumberText(job.number));
    record.CreateChildT("input", job.input);
    record.CreateChildT("preset", job.preset);
    if (!job.IsPlanned())
    {
        record.CreateChildT("refusal", job.refusal);
        return record;
    }
    record.CreateChildT("output", job.output);
    record.CreateChildT("size", job.size);
    if (job.duration)
    {
        record.CreateChildT("duration", *job.duration);
    }
    SetTexts(record, "notes", job.notes);
    return record;
}

class BatchReader
{
public:
    explicit BatchReader(const BatchFolder& folder) : m_file(folder.NameOf(BatchNames::kDocument))
    {
        m_batch.folder = folder.GetName();
        m_batch.base = folder.GetBase();
    }

    Batch Read(const std::string& text)
    {
        const Property record = ParseRecord(text, m_file, "batch");
        const auto version = record.FindChild("version");
        // What another version has beside it is not for this one to judge.
        if (version != record.end() && version->GetType() == PROPERTY_TYPE_INT64 &&
            version->GetInt64() != kVersion)
        {
            RefuseBatch(Place{m_file}.At("version"), "expected " + std::to_string(kVersion) + ", found " +
                                                         std::to_string(version->GetInt64()));
        }
        const RecordMembers members(record, Place{m_file},
                                    {"version", "presets", "outputFolder", "namePattern", "jobs"});
        members.Integer("version", kVersion, kVersion);
        ReadPresets(members);
        ReadOutputFolder(members);
        m_batch.namePattern = members.Text("namePattern");
        const Property& jobs = members.Group("jobs");
        if (jobs.Count() > Batch::kMostJobs)
        {
            RefuseBatch(members.At("jobs"), "expected at most " + std::to_string(Batch::kMostJobs) +
                                                " jobs, found " + std::to_string(jobs.Count()));
        }
        m_batch.jobs.reserve(jobs.Count());
        for (const Property& job : jobs)
        {
            ReadJob(job, members.At("jobs"));
        }
        return std::move(m_batch);
    }

private:
    /// Nothing can be planned so, since the batch is new then. An output could replace a document of it.
    void ReadOutputFolder(const RecordMembers& members)
    {
        m_batch.outputFolder = PathMember(members, "outputFolder");
        if (IsInFolder(m_batch.PathOf(m_batch.outputFolder), m_batch.base))
        {
            RefuseBatch(members.At("outputFolder"),
                        "expected a folder outside of the batch, found '" + m_batch.outputFolder + "'");
        }
    }

    void ReadPresets(const RecordMembers& members)
    {
        for (const Property& preset : members.Group("presets"))
        {
            const Place place = members.At("presets").Under(preset.GetName());
            const RecordMembers file(preset, place, {"file"});
            if (!m_presets.insert(preset.GetName()).second)
            {
                RefuseBatch(place, "stands there twice");
            }
            m_batch.presets.push_back({preset.GetName(), PathMember(file, "file")});
        }
    }

    void ReadJob(const Property& record, const Place& jobs)
    {
        const Place place = jobs.Under(record.GetName());
        BatchJob job;
        job.number = static_cast<unsigned int>(m_batch.jobs.size() + 1);
        if (record.GetName() != NumberText(job.number))
        {
            RefuseBatch(place, "expected '" + NumberText(job.number) + "' here");
        }
        const RecordMembers members(record, place,
                                    {"input", "preset", "output", "size", "duration", "notes", "refusal"});
        job.input = PathMember(members, "input");
        job.preset = members.Text("preset");
        if (m_presets.count(job.preset) == 0)
        {
            RefuseBatch(members.At("preset"),
                        "the batch does not have a preset of the name '" + job.preset + "'");
        }
        members.Has("refusal") ? ReadRefusal(members, job) : ReadPlan(members, job);
        m_batch.jobs.push_back(std::move(job));
    }

    static void ReadRefusal(const RecordMembers& members, BatchJob& job)
    {
        job.refusal = members.Text("refusal");
        if (job.refusal.empty() || members.Has("output"))
        {
            RefuseBatch(members.At("refusal"), "expected a reason, and no output beside it");
        }
    }

    static void ReadPlan(const RecordMembers& members, BatchJob& job)
    {
        job.output = members.Text("output");
        if (!IsFileName(job.output))
        {
            RefuseBatch(members.At("output"), "expected the name of a file, found '" + job.output + "'");
        }
        job.size = static_cast<std::uint64_t>(members.Integer("size", 0, kMostInteger));
        if (members.Has("duration"))
        {
            job.duration = members.Integer("duration", 0, kMostInteger);
        }
        job.notes = members.Texts("notes");
    }

    std::string m_file;
    Batch m_batch;
    /// Their names: a document may hold as many presets as jobs.
    std::set<std::string> m_presets;
};

} // namespace

bool IsFileName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

bool IsKeptPath(const std::string& path)
{
    if (path.empty() || path.find('\0') != std::string::npos)
    {
        return false;
    }
    if (path.front() == '/')
    {
        return true;
    }
    bool isInside = false;
    for (const fs::path& part : fs::path(path))
    {
        if (part == ".." && isInside)
        {
            return false;
        }
        isInside = isInside || part != "..";
    }
    return true;
}

bool IsInFolder(const std::string& path, const std::string& folder)
{
    const fs::path inner = fs::path(path).lexically_normal();
    const fs::path outer = folder;
    return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

std::string Batch::PathOf(const std::string& kept) const
{
    return kept.front() == '/' ? kept : (fs::path(base) / kept).lexically_normal().string();
}

std::string Batch::OutputOf(const BatchJob& job) const
{
    return (fs::path(outputFolder) / job.output).string();
}

std::string Batch::DocumentOf(unsigned int number) const
{
    return folder + "/" + BatchNames::kJobs + "/" + BatchFileName(number);
}

const BatchJob& Batch::JobOf(unsigned int number) const
{
    if (number == 0 || number > jobs.size())
    {
        RefuseBatch(Place{folder}, "there is no job " + std::to_string(number) + "; the batch has " +
                                       std::to_string(jobs.size()));
    }
    return jobs[number - 1];
}

std::string BatchText(const Batch& batch)
{
    Property record("batch");
    record.CreateChildT("version", kVersion);
    Property& presets = record.SetChild("presets");
    for (const BatchPreset& preset : batch.presets)
    {
        presets.SetChild(preset.name).CreateChildT("file", preset.file);
    }
    record.CreateChildT("outputFolder", batch.outputFolder);
    record.CreateChildT("namePattern", batch.namePattern);
    Property& jobs = record.SetChild("jobs");
    for (const BatchJob& job : batch.jobs)
    {
        jobs.Add(RecordOf(job));
    }
    return RecordDocument(record);
}

Batch ReadBatch(const BatchFolder& folder) { return BatchReader(folder).Read(folder.ReadDocument()); }

Batch ReadBatch(const std::string& folder) { return ReadBatch(BatchFolder(folder)); }

} // namespace Zelnor::Media
