#include "Media/Batch/BatchPlan.h"

#include "Media/Batch/BatchPaths.h"
#include "Media/Batch/BatchRecord.h"
#include "Media/Batch/InputFiles.h"
#include "Media/Batch/NamePattern.h"
#include "Media/Batch/NewBatchFolder.h"
#include "Media/Batch/OutputNames.h"
#include "Media/Batch/RecordMembers.h"
#include "Media/Batch/Workers.h"
#include "Media/ErrorText.h"
#include "Media/Jobs/MediaSpan.h"
#include "Media/MediaException.h"
#include "Media/Planning/JobPlan.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetFolders.h"
#include "Media/Probe/MediaProbe.h"
#include "Media/RecordText.h"
#include "Media/Text.h"

#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/MediaTypeUtils.h"

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <new>
#include <set>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;
using PresetPtr = boost::intrusive_ptr<const Conf::IPreset>;

constexpr const char* kUnit = "Media/Batch/BatchPlan";

/// A preset of a batch, read.
struct OpenPreset
{
    std::string name;
    std::string file;
    PresetPtr preset;
    std::string extension; ///< of its container; empty when that does not have one
};

[[noreturn]] void RefuseRequest(const std::string& reason)
{
    ZELNOR_THROW(kUnit, MakeError<PlanException>(reason));
}

std::string ExtensionOf(const Conf::IPreset& preset, const JobRequest& request)
{
    std::string container = TextUnder(preset.GetProperty(), Conf::IFormatFile::TAG_CONTAINER);
    for (const SettingOverride& setting : request.settings)
    {
        if (setting.path == Conf::IFormatFile::TAG_CONTAINER &&
            setting.value.GetType() == PROPERTY_TYPE_STRING)
        {
            container = setting.value.GetString();
        }
    }
    if (request.streams.losslessDvd)
    {
        container = Conf::IFormatFile::FORMAT_DVD;
    }
    try
    {
        return Conf::GetDefaultFileExtensionForContainer(container);
    }
    catch (const std::invalid_argument&)
    {
        return "";
    }
}

std::vector<OpenPreset> OpenPresets(const BatchRequest& request)
{
    if (request.presets.empty())
    {
        RefuseRequest("A batch needs a preset");
    }
    std::vector<OpenPreset> presets;
    std::set<std::string> names;
    for (const std::string& name : request.presets)
    {
        OpenPreset preset;
        preset.file = FindPreset(name);
        preset.name = fs::path(preset.file).stem().string();
        preset.preset = PresetFile::Open(preset.file);
        preset.extension = ExtensionOf(*preset.preset, request.job);
        if (!names.insert(preset.name).second)
        {
            RefuseRequest("Two presets have the name '" + preset.name + "'");
        }
        presets.push_back(std::move(preset));
    }
    return presets;
}

/// The name of the folder that the file is in.
std::string ParentName(const std::string& path)
{
    std::error_code error;
    return fs::absolute(path, error).lexically_normal().parent_path().filename().string();
}

std::uint64_t SizeOf(const std::string& path)
{
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

/// Plans the jobs of all inputs; the parts that each thread calls change nothing that others use.
class BatchPlanner
{
public:
    BatchPlanner(const BatchRequest& request, const std::vector<OpenPreset>& presets,
                 const std::vector<InputFile>& inputs, const NewBatchFolder& folder)
        : m_request(request), m_presets(presets), m_inputs(inputs), m_folder(folder)
    {
        m_batch.folder = request.folder;
        m_batch.base = folder.GetBase();
        m_batch.outputFolder = KeptPath(request.outputFolder, m_batch.base);
        m_batch.namePattern = request.namePattern;
        for (const OpenPreset& preset : presets)
        {
            m_batch.presets.push_back({preset.name, KeptPath(preset.file, m_batch.base)});
        }
        m_batch.jobs.resize(inputs.size() * presets.size());
    }

    /// \returns false when no input is left
    bool PlanNext()
    {
        const std::size_t position = m_next.fetch_add(1);
        if (position >= m_inputs.size() || m_request.cancel.IsCancelled())
        {
            return false;
        }
        PlanInput(position);
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_done;
        if (m_request.onProgress)
        {
            m_request.onProgress(m_done, m_inputs.size());
        }
        return true;
    }

    Batch Take() { return std::move(m_batch); }

private:
    void PlanInput(std::size_t position)
    {
        const InputFile& input = m_inputs[position];
        std::optional<MediaFile> file;
        std::string refusal = input.reason;
        if (refusal.empty())
        {
            refusal = ReasonOf([&] { file = ProbeMedia(input.path); });
        }
        for (std::size_t i = 0; i < m_presets.size(); ++i)
        {
            BatchJob& job = m_batch.jobs[position * m_presets.size() + i];
            job.number = static_cast<unsigned int>(position * m_presets.size() + i + 1);
            job.input = KeptPath(input.path, m_batch.base);
            job.preset = m_presets[i].name;
            job.refusal = refusal;
            if (file)
            {
                job.refusal = ReasonOf([&] { PlanOne(*file, m_presets[i], job); });
            }
        }
    }

    /// Why the action failed; empty when it did not.
    template <class Action>
    static std::string ReasonOf(Action&& action)
    {
        try
        {
            std::forward<Action>(action)();
            return "";
        }
        catch (const std::bad_alloc&)
        {
            throw;
        }
        catch (const RunException&)
        {
            // The batch cannot be written, which is not a matter of this job.
            throw;
        }
        catch (const std::exception&)
        {
            return ErrorText(std::current_exception());
        }
    }

    void PlanOne(const MediaFile& file, const OpenPreset& preset, BatchJob& job) const
    {
        const fs::path input = file.name;
        JobRequest request = m_request.job;
        const std::string name =
            ApplyNamePattern(m_request.namePattern, {input.stem().string(), preset.extension, preset.name,
                                                     NumberText(job.number), ParentName(file.name)});
        request.output = (fs::path(m_request.outputFolder) / name).string();
        std::error_code error;
        if (fs::is_directory(request.output, error))
        {
            RefuseRequest("'" + request.output + "' is a folder");
        }
        const PlannedJob planned = PlanJob(file, preset.preset, request);
        const std::string output = fs::path(planned.output).filename().string();
        const std::string kept = (fs::path(m_batch.outputFolder) / output).string();
        const auto graph = WithPaths(*planned.graph, job.input, [&](const std::string& path) {
            return path == planned.output ? kept : path == file.name ? job.input : path;
        });
        const auto document = Core::MemoryDataOutput::Create();
        graph->Save(document);
        m_folder.WriteJob(job.number, document->GetData());
        job.output = output;
        job.notes = planned.notes;
        job.duration = MediaSpan{request.start.value_or(0), request.end}.DurationOf(file.duration);
        job.size = SizeOf(file.name);
    }

    const BatchRequest& m_request;
    const std::vector<OpenPreset>& m_presets;
    const std::vector<InputFile>& m_inputs;
    const NewBatchFolder& m_folder;
    Batch m_batch;
    std::atomic<std::size_t> m_next{0};
    std::mutex m_mutex; ///< of the progress
    std::size_t m_done = 0;
};

/// \throw PlanException when the output folder cannot be made later, or is the batch's own
void CheckOutputFolder(const BatchRequest& request, const std::string& base)
{
    struct stat status = {};
    if (request.outputFolder.empty())
    {
        RefuseRequest("A batch needs an output folder");
    }
    if (::stat(request.outputFolder.c_str(), &status) == 0 && !S_ISDIR(status.st_mode))
    {
        RefuseRequest("'" + request.outputFolder + "' is not a folder");
    }
    const fs::path parent = fs::path(request.outputFolder + "/..").lexically_normal();
    const bool isThere = ::stat(request.outputFolder.c_str(), &status) == 0;
    if (!isThere && (::stat(parent.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)))
    {
        RefuseRequest("'" + request.outputFolder + "' cannot be made: there is no folder '" +
                      parent.string() + "'");
    }
    const std::string kept = KeptPath(request.outputFolder, base);
    if (IsInFolder((fs::path(base) / kept).string(), base))
    {
        RefuseRequest("The output folder '" + request.outputFolder + "' is inside of the batch");
    }
}

/// \throw PlanException when nothing could be planned
void RequirePlanned(const Batch& batch)
{
    const bool isPlanned = std::any_of(batch.jobs.begin(), batch.jobs.end(),
                                       [](const BatchJob& job) { return job.IsPlanned(); });
    if (!isPlanned)
    {
        const std::size_t count = batch.jobs.size();
        RefuseRequest("No job can be planned: " + batch.jobs.front().refusal +
                      (count == 1 ? "" : " (and " + Count(count - 1, "more reason") + ")"));
    }
}

} // namespace

PlannedBatch PlanBatch(const BatchRequest& request)
{
    CheckNamePattern(request.namePattern);
    const std::vector<OpenPreset> presets = OpenPresets(request);
    NewBatchFolder folder(request.folder);
    CheckOutputFolder(request, folder.GetBase());
    const std::vector<InputFile> inputs = FindInputFiles(request.inputs, request.outputFolder,
                                                         [&request] { return request.cancel.IsCancelled(); });
    PlannedBatch planned;
    if (inputs.empty() && !request.cancel.IsCancelled())
    {
        RefuseRequest("No media file was found");
    }
    if (inputs.size() > Batch::kMostJobs / presets.size())
    {
        RefuseRequest("A batch has at most " + std::to_string(Batch::kMostJobs) + " jobs");
    }
    BatchPlanner planner(request, presets, inputs, folder);
    const unsigned int threads =
        request.threads != 0 ? request.threads : std::max(1U, std::thread::hardware_concurrency());
    RunWorkers(std::min(threads, static_cast<unsigned int>(std::max<std::size_t>(1, inputs.size()))),
               [&planner] { return planner.PlanNext(); });
    planned.batch = planner.Take();
    planned.isCancelled = request.cancel.IsCancelled();
    if (planned.isCancelled)
    {
        return planned;
    }
    RequirePlanned(planned.batch);
    std::vector<std::string> read;
    for (const InputFile& input : inputs)
    {
        read.push_back(input.path);
    }
    for (const OpenPreset& preset : presets)
    {
        read.push_back(preset.file);
    }
    planned.existing = CheckOutputs(planned.batch, read);
    folder.Commit(BatchText(planned.batch));
    return planned;
}

} // namespace Zelnor::Media
