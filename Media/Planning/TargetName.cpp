#include "Media/Planning/TargetName.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/MediaException.h"
#include "Media/Planning/Containers.h"
#include "Media/Text.h"

#include "Conf/Interfaces/FormatLists.h"
#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Interfaces/MediaTypeUtils.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <stdexcept>
#include <system_error>
#include <unordered_map>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;
using Conf::IFormatFile;

constexpr const char* kUnit = "Media/Planning/TargetName";

/// Empty where a container does not have a usual extension.
std::string DefaultExtension(const std::string& container)
{
    try
    {
        return Conf::GetDefaultFileExtensionForContainer(container);
    }
    catch (const std::invalid_argument&)
    {
        return "";
    }
}

/// The first container of the vocabulary for each usual extension.
std::unordered_map<std::string, std::string> ContainersByExtension()
{
    std::unordered_map<std::string, std::string> containers;
    for (const std::string& container : Conf::GetContainerList())
    {
        containers.try_emplace(DefaultExtension(container), container);
    }
    return containers;
}

bool IsIn(const std::string& text, std::initializer_list<const char*> texts)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// Whether FFmpeg's muxer of the container has the extension, or, for an image, codes it in the same way.
bool IsFFmpegs(const std::string& container, const std::string& extension)
{
    const AVOutputFormat* const muxer = FindMuxer(container);
    if (muxer == nullptr || muxer->extensions == nullptr ||
        av_match_ext(("x." + extension).c_str(), muxer->extensions) == 0)
    {
        return false;
    }
    const auto codec = [muxer](const std::string& ending) {
        return av_guess_codec(muxer, nullptr, ("x." + ending).c_str(), nullptr, AVMEDIA_TYPE_VIDEO);
    };
    return !IsPicture(container) || codec(extension) == codec(DefaultExtension(container));
}

/// Extensions that people give to files of a container beside its own.
bool IsCustomary(const std::string& container, const std::string& extension)
{
    const auto isOneOf = [&container](std::initializer_list<const std::string*> containers) {
        return std::any_of(containers.begin(), containers.end(),
                           [&container](const std::string* known) { return *known == container; });
    };
    // An MPEG program stream is one, on a DVD or not.
    if (isOneOf({&IFormatFile::FORMAT_DVD, &IFormatFile::FORMAT_VOB, &IFormatFile::FORMAT_MPEG}))
    {
        return IsIn(extension, {"vob", "mpg", "mpeg"});
    }
    if (isOneOf({&IFormatFile::FORMAT_MP4, &IFormatFile::FORMAT_M4A, &IFormatFile::FORMAT_IPOD,
                 &IFormatFile::FORMAT_PSP}))
    {
        return IsIn(extension, {"mp4", "m4v", "m4a", "m4b", "m4r"});
    }
    if (isOneOf({&IFormatFile::FORMAT_MPEGTS, &IFormatFile::FORMAT_MPEG2TS}))
    {
        return IsIn(extension, {"ts", "mts", "m2t", "m2ts"});
    }
    if (isOneOf({&IFormatFile::FORMAT_OGG, &IFormatFile::FORMAT_OGV}))
    {
        return IsIn(extension, {"ogg", "ogv", "oga", "opus", "spx"});
    }
    return (container == IFormatFile::FORMAT_MATROSKA && IsIn(extension, {"mkv", "mka", "mks"})) ||
           (container == IFormatFile::FORMAT_MOV && IsIn(extension, {"mov", "qt"}));
}

bool Fits(const std::string& container, const std::string& extension)
{
    return extension == DefaultExtension(container) || IsCustomary(container, extension) ||
           IsFFmpegs(container, extension);
}

/// The first container of the vocabulary whose files have the extension; empty when there is none.
std::string ContainerOf(const std::string& extension)
{
    // Many containers do not have one, and each of them says so with an exception, which takes its time.
    static const std::unordered_map<std::string, std::string> s_containers = ContainersByExtension();
    const auto found = s_containers.find(extension);
    return found == s_containers.end() ? "" : found->second;
}

bool IsFolder(const std::string& output)
{
    std::error_code error;
    return output.back() == '/' || fs::is_directory(output, error);
}

std::string WithDefaultExtension(const std::string& name, const std::string& container)
{
    const std::string extension = DefaultExtension(container);
    return extension.empty() ? name : name + "." + extension;
}

} // namespace

std::string TargetName(const std::string& output, const MediaFile& source, const std::string& container)
{
    if (IsFolder(output))
    {
        return (fs::path(output) / WithDefaultExtension(fs::path(source.name).stem().string(), container))
            .string();
    }
    if (!fs::path(output).has_extension())
    {
        return WithDefaultExtension(output, container);
    }
    const std::string extension = LowerCase(fs::path(output).extension().string().substr(1));
    const std::string other = extension.empty() ? "" : ContainerOf(extension);
    // What looks like an extension may be a part of the name.
    if (!other.empty() && !Fits(container, extension))
    {
        ZELNOR_THROW(kUnit, MakeError<PlanException>(
                                "'" + output + "' is named like a file of the container " + other +
                                ", and the container to make is " + container +
                                "; another preset makes the one, another extension fits the other"));
    }
    return output;
}

} // namespace Zelnor::Media
