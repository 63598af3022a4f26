#pragma once

#include "Core/Interfaces/Export.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// \file
/// A batch: many jobs that are kept in one folder, so that they can be run, stopped and gone on with.
///
///     films/batch.json            what was planned, the jobs in order
///     films/jobs/000001.json      a plain job document for each job that could be planned
///     films/results/000001.json   what became of it
///
/// `PlanBatch` makes the folder, `RunBatch` runs what is not done, `ReadBatchStatus` tells how far it is.
///
/// A path that a batch keeps is absolute, or relative to the batch's folder: where it was given relative to
/// the working folder, batch, inputs and outputs can be moved together.

namespace Zelnor::Media
{

/// A preset that the batch was planned with.
struct BatchPreset
{
    std::string name; ///< its file's name without the extension
    std::string file; ///< kept for people; no run reads it
};

/// One input with one preset.
struct BatchJob
{
    unsigned int number = 0; ///< its position in the batch, from 1
    std::string input;       ///< a path that the batch keeps
    std::string preset;      ///< the name of one of the batch's presets
    std::string output;      ///< the file's name in the output folder; empty when no job could be planned
    std::string refusal;     ///< why no job could be planned; empty when one was
    /// What the plan has to say, such as what of the input will be lost; sentences without an end.
    std::vector<std::string> notes = {};
    std::optional<std::int64_t> duration = {}; ///< of the output in microseconds, if known
    std::uint64_t size = 0;                    ///< bytes of the input when it was planned

    bool IsPlanned() const { return refusal.empty(); } ///< whether there is a job to run
};

/// A batch as its folder keeps it.
struct ZELNOR_API Batch
{
    /// No batch has more jobs.
    static constexpr unsigned int kMostJobs = 999'999;

    std::string folder;               ///< its name as given, for messages
    std::string base;                 ///< the folder's absolute name, without links
    std::vector<BatchPreset> presets; ///< those that the batch keeps
    std::string outputFolder;         ///< a path that the batch keeps
    std::string namePattern;          ///< "{stem}.{ext}"
    std::vector<BatchJob> jobs;       ///< in the order in which they run

    /// What to open for a path that the batch keeps.
    std::string PathOf(const std::string& kept) const;
    /// The path of a job's output, as the batch keeps it.
    std::string OutputOf(const BatchJob& job) const;
    /// The job's document: "films/jobs/000001.json".
    std::string DocumentOf(unsigned int number) const;
    /// \throw JobException "films: there is no job 13; the batch has 12"
    const BatchJob& JobOf(unsigned int number) const;
};

/// Reads the record of the batch, "batch.json", and no other file. Nothing in it is taken on trust: unknown
/// members, another version, numbers that are not the positions, and names that lead out of the output folder
/// are refused.
/// \throw JobException "films/batch.json: jobs.000003.output: expected the name of a file, found '../a.mp3'"
ZELNOR_API Batch ReadBatch(const std::string& folder);

} // namespace Zelnor::Media
