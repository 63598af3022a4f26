#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Records.h"

#include "Core/Interfaces/DataStream.h"
#include "Media/Presets/PresetFile.h"
#include "Media/Presets/PresetFolders.h"

#include <pybind11/stl.h>

namespace Zelnor::Python
{

namespace
{

Preset Open(const Path& path)
{
    const WithoutLock withoutLock;
    return {Media::PresetFile::Open(path.bytes)};
}

Preset Read(const Text& text, const Text& name)
{
    const auto input = Core::MemoryDataInput::Create(text.bytes);
    return {Media::PresetFile::Read(*input, name.bytes)};
}

/// Through its document, since that is where the rules of presets are checked.
Preset FromRecord(const py::object& record, const Text& name)
{
    const py::object json = py::module_::import("zelnor._zelnor").attr("_record_to_json")(record);
    return Read({BytesOf(json)}, name);
}

std::vector<ioPath> ToPaths(const std::vector<Path>& folders)
{
    std::vector<ioPath> paths;
    for (const Path& folder : folders)
    {
        paths.emplace_back(folder.bytes);
    }
    return paths;
}

py::object FsDecode(const std::string& path)
{
    return py::reinterpret_steal<py::object>(
        PyUnicode_DecodeFSDefaultAndSize(path.data(), static_cast<Py_ssize_t>(path.size())));
}

void BindFolders(py::module_& module)
{
    module.def(
        "default_preset_folders",
        [] {
            py::list folders;
            for (const ioPath& folder : Media::DefaultPresetFolders())
            {
                folders.append(FsDecode(folder.utf8string()));
            }
            return folders;
        },
        "Return the folders that presets are installed in, best first.");
    module.def(
        "list_presets",
        [](const std::optional<std::vector<Path>>& folders) {
            return ToPython(Media::ListPresets(folders ? ToPaths(*folders) : Media::DefaultPresetFolders()));
        },
        py::arg("folders") = py::none(), "Return the names of the presets in the folders, each once.");
    module.def(
        "find_preset",
        [](const Path& name, const std::optional<std::vector<Path>>& folders) {
            return FsDecode(
                Media::FindPreset(name.bytes, folders ? ToPaths(*folders) : Media::DefaultPresetFolders()));
        },
        py::arg("name"), py::arg("folders") = py::none(),
        "Return the path of the preset that the name means, which may be a path itself.\n\n"
        "Raise PresetFileException when there is none.");
}

} // namespace

void BindPresets(py::module_& module)
{
    py::class_<Preset> type(module, "Preset", py::is_final(),
                            "What output files shall be, read from a file and checked.");
    type.def_static("open", &Open, py::arg("path"),
                    "Read and check a preset file. Raise PresetFileException, which names the place.")
        .def_static("read", &Read, py::arg("text"), py::arg("name") = Text{"preset"},
                    "Read and check the text of a preset file, which messages call name.")
        .def_static("from_record", &FromRecord, py::arg("record"), py::arg("name") = Text{"preset"},
                    "Make a preset of a record, which is checked like a file's.")
        .def_property_readonly(
            "record", [](const Preset& self) { return ToRecord(self.preset->GetProperty()); },
            "A copy of the complete record.")
        .def_property_readonly(
            "stream_count", [](const Preset& self) { return self.preset->GetStreamCount(); },
            "The number of streams of the output.")
        .def(
            "stream_indexes",
            [](const Preset& self, const Text& streamType) {
                std::vector<int> indexes;
                self.preset->GetStreamIndexes(streamType.bytes, indexes);
                return indexes;
            },
            py::arg("stream_type"), "Return the indexes of the streams of a STREAM_TYPE_.")
        .def_property_readonly(
            "is_audio_only", [](const Preset& self) { return Conf::IsAudioOnlyPreset(self.preset); },
            "Whether there are streams and all of them are audio.")
        .def("__repr__", [](const Preset& self) {
            return py::str("<zelnor.Preset {!r}>").format(ToPython(self.preset->GetProperty().GetName()));
        });
    Seal(type, nullptr);
    BindFolders(module);
}

} // namespace Zelnor::Python
