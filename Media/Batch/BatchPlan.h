#pragma once

#include "Media/Batch/Batch.h"
#include "Media/Planning/JobRequest.h"
#include "Media/Running/JobRun.h"

#include "Core/Interfaces/Export.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

/// \file
/// Making a batch:
///
///     BatchRequest request;
///     request.folder = "films";
///     request.presets = {"mp4-h264-aac"};
///     request.inputs = {"/media/films"};
///     request.outputFolder = "converted";
///     const PlannedBatch planned = PlanBatch(request);

namespace Zelnor::Media
{

/// What a batch shall be made of.
struct BatchRequest
{
    std::string folder = {};               ///< the folder to make; there must not be such a file
    std::vector<std::string> presets = {}; ///< files, or names as `FindPreset` knows them
    /// Files, and folders with all that is in them: files with an extension that the vocabulary has for video
    /// or audio, in order of their names. Hidden ones are passed over, each folder is looked into once, and
    /// so is an output folder inside. A file that is named twice counts once.
    std::vector<std::string> inputs = {};
    /// Where all outputs go. It need not be there, but the folder that it is in must; a run makes it.
    std::string outputFolder = {};
    /// The outputs' names: text with {stem} and {ext}, the input's name without its extension and the
    /// container's extension, {preset}, {number} (six digits) and {parent}, the name of the input's folder.
    std::string namePattern = "{stem}.{ext}";
    JobRequest job = {};      ///< what each job does beyond its preset; its `output` is not used
    unsigned int threads = 0; ///< that plan at once; 0: as many as there are processors
    /// Called for each input that was looked at, by several threads but never at once.
    std::function<void(std::size_t done, std::size_t count)> onProgress = {};
    CancelToken cancel = {};
};

/// A batch that was made.
struct PlannedBatch
{
    Batch batch;              ///< as its folder keeps it
    bool isCancelled = false; ///< no folder was made
    /// Outputs that are there already, as paths to open. A run replaces them only when it is told to.
    std::vector<std::string> existing = {};
};

/// Plans a job for each input with each preset and makes the batch's folder, whole or not at all. A job that
/// cannot be planned is kept with its reason and does not stop the others. Inputs are opened, each once;
/// nothing but the folder is written.
///
/// \throw PlanException when nothing can be planned, when the name pattern is wrong, when two outputs would
///        have the same name, however it is spelled, or be a file that the batch reads
/// \throw PresetFileException when a preset cannot be read
/// \throw RunException when the folder cannot be made
ZELNOR_API PlannedBatch PlanBatch(const BatchRequest& request);

} // namespace Zelnor::Media
