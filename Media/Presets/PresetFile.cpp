#include "Media/Presets/PresetFile.h"

#include "Media/About.h"
#include "Media/JsonText.h"
#include "Media/Presets/PresetRules.h"

#include "Core/Interfaces/PropertySerializer.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

namespace Zelnor::Media
{

namespace
{

namespace fs = std::filesystem;

constexpr const char* kUnit = "Media/Presets/PresetFile";

/// Where presets lie, as seen from the program's folder: installed, and in the tree it was built in.
constexpr std::array<const char*, 2> kPresetFolders = {"../share/zelnor/Presets", "../../../Presets"};

constexpr const char* kExtension = ".json";

/// The folders that exist. All of them are named relative to the program, so that it can be moved.
std::vector<fs::path> PresetFolders()
{
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    std::vector<fs::path> folders;
    for (const char* const folder : kPresetFolders)
    {
        fs::path path = (program.parent_path() / folder).lexically_normal();
        if (!program.empty() && fs::is_directory(path, error))
        {
            folders.push_back(std::move(path));
        }
    }
    return folders;
}

/// "mkv-vp8-vorbis, mp3, mp4-h264-aac"
std::string PresetNames(const std::vector<fs::path>& folders)
{
    std::vector<std::string> names;
    for (const fs::path& folder : folders)
    {
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
        {
            if (entry.path().extension() == kExtension)
            {
                names.push_back(entry.path().stem().string());
            }
        }
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    std::string text;
    for (const std::string& name : names)
    {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

Core::Property ParsePreset(const std::string& text)
{
    ParsedJson json = ParseJson(text);
    if (!json.fault.empty())
    {
        ZELNOR_THROW(kUnit, MakeError<PresetFileException>(json.fault));
    }
    if (!json.document.IsObject())
    {
        ZELNOR_THROW(kUnit,
                     MakeError<PresetFileException>("A preset is a record (an object with one member)"));
    }
    Core::Property record;
    Core::PropertySerializer::Load(record, json.document);
    CheckPreset(record);
    return record;
}

} // namespace

std::string FindPreset(const std::string& name)
{
    std::error_code error;
    const bool isFile = fs::exists(name, error) && !fs::is_directory(name, error);
    if (name.find('/') != std::string::npos || isFile)
    {
        return name;
    }
    const std::vector<fs::path> folders = PresetFolders();
    for (const fs::path& folder : folders)
    {
        for (const std::string& file : {name, name + kExtension})
        {
            const fs::path path = folder / file;
            if (fs::is_regular_file(path, error))
            {
                return path.string();
            }
        }
    }
    const std::string known = PresetNames(folders);
    ZELNOR_THROW(kUnit, MakeError<PresetFileException>(
                            "There is no preset '" + name +
                            "': neither a file nor one of the presets that came with " + "the program (" +
                            (known.empty() ? "none was found" : known) + ")"));
}

boost::intrusive_ptr<PresetFile> PresetFile::Open(const ioPath& path)
{
    return Read(*Core::FileDataInput::Create(path), path.utf8string());
}

boost::intrusive_ptr<PresetFile> PresetFile::Read(Core::IDataInput& input, const std::string& name)
{
    return About<PresetFileException>(
        name, [&] { return boost::intrusive_ptr<PresetFile>(new PresetFile(ParsePreset(ReadAll(input)))); });
}

PresetFile::PresetFile(Core::Property record) : m_record(std::move(record)) {}

PresetFile::~PresetFile() = default;

std::uint32_t PresetFile::GetStreamCount() const
{
    return static_cast<std::uint32_t>(m_record[KEY_STREAMS].Count());
}

void PresetFile::GetStreamIndexes(const std::string& streamType, std::vector<int>& out) const
{
    int index = 0;
    for (const Core::Property& stream : m_record[KEY_STREAMS])
    {
        if (stream.GetName() == streamType)
        {
            out.push_back(index);
        }
        ++index;
    }
}

} // namespace Zelnor::Media
