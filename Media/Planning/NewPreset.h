#pragma once

#include "Media/Planning/JobRequest.h"
#include "Media/Probe/MediaProbe.h"

#include "Core/Interfaces/Export.h"
#include "Core/Interfaces/Property.h"

#include <string>
#include <vector>

/// \file
/// Makes presets out of what there is. "More like this", but smaller:
///
///     const NewPreset like = MakePresetLike(ProbeMedia("holiday.mp4"), "holiday");
///     const Core::Property preset =
///         ChangePreset(like.record, "holiday", {ParseSetting("video.bitrate=2000000")}).record;

namespace Zelnor::Media
{

/// The record of a preset that is not in a file yet, and what whoever asked for it should know.
struct NewPreset
{
    Core::Property record;               ///< as a preset file holds it
    std::vector<std::string> notes = {}; ///< sentences without an end
};

/// The preset that makes files like this one: its container, and for one video and one audio, the default
/// ones or the first, the codec, the size, the rates, the bitrate and the profile, as far as they are known.
/// Subtitles and covers go into a job's output without a word in its preset. What cannot be made here is
/// replaced by the nearest that can, with a note.
/// \param name  of the preset
/// \throw PlanException "notes.txt: there is no video and no audio to make a preset of"
ZELNOR_API NewPreset MakePresetLike(const MediaFile& source, const std::string& name);

/// The preset under another name, with settings in place of its own.
/// \param preset  the record of a preset
/// \throw PlanException "video.bitrat: unknown setting 'bitrat'; did you mean 'bitrate'?"
/// \throw PresetFileException when the result does not keep to the rules of presets
ZELNOR_API NewPreset ChangePreset(const Core::Property& preset, const std::string& name,
                                  const std::vector<SettingOverride>& settings);

} // namespace Zelnor::Media
