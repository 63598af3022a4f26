#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Records.h"
#include "Bindings/Python/Source/Values.h"

#include "Media/Jobs/JobFile.h"
#include "Media/Planning/JobPlan.h"

#include <pybind11/stl.h>

namespace Zelnor::Python
{

namespace
{

/// Reads the attributes of a request, which is plain Python: each may be anything.
class RequestReader
{
public:
    explicit RequestReader(const py::object& request) : m_request(request) {}

    template <class T>
    T Get(const char* name) const
    {
        const py::object value = m_request.attr(name);
        try
        {
            return py::cast<T>(value);
        }
        catch (const py::cast_error&)
        {
            throw py::type_error(std::string(name) + " cannot be " +
                                 py::cast<std::string>(py::repr(py::type::of(value))));
        }
    }
    /// Not anything that is true: "no" would be.
    bool Flag(const char* name) const
    {
        const py::object value = m_request.attr(name);
        if (PyBool_Check(value.ptr()) == 0)
        {
            throw py::type_error(std::string(name) + " is True or False");
        }
        return value.ptr() == Py_True;
    }
    std::vector<std::string> Texts(const char* name) const
    {
        std::vector<std::string> texts;
        for (const Text& text : Get<std::vector<Text>>(name))
        {
            texts.push_back(text.bytes);
        }
        return texts;
    }
    std::optional<std::int64_t> Time(const char* name) const
    {
        const auto time = Get<std::optional<Integer<std::int64_t>>>(name);
        return time ? std::optional<std::int64_t>(time->value) : std::nullopt;
    }
    unsigned int Index(const char* name) const { return Get<Integer<unsigned int>>(name).value; }
    /// The members of a sequence.
    std::vector<RequestReader> Members(const char* name) const
    {
        std::vector<RequestReader> members;
        for (const py::object& member : Get<std::vector<py::object>>(name))
        {
            members.emplace_back(member);
        }
        return members;
    }
    py::object Attribute(const char* name) const { return m_request.attr(name); }

private:
    py::object m_request;
};

std::optional<Media::FrameLimit> ReadLimit(const py::object& limit)
{
    if (limit.is_none())
    {
        return std::nullopt;
    }
    const RequestReader reader(limit);
    return Media::FrameLimit{reader.Get<Integer<std::uint32_t>>("width").value,
                             reader.Get<Integer<std::uint32_t>>("height").value};
}

Media::StreamKind ReadKind(const py::object& kind)
{
    const auto name = RequestReader(kind).Get<Text>("value");
    for (const auto candidate :
         {Media::StreamKind::Video, Media::StreamKind::Audio, Media::StreamKind::Subtitle,
          Media::StreamKind::Data, Media::StreamKind::Attachment, Media::StreamKind::Unknown})
    {
        if (name.bytes == Media::NameOf(candidate))
        {
            return candidate;
        }
    }
    throw py::value_error("there is no kind of stream '" + name.bytes + "'");
}

Media::StreamRequest ReadStreams(const RequestReader& reader)
{
    Media::StreamRequest streams;
    for (const auto index : reader.Get<std::vector<Integer<unsigned int>>>("chosen"))
    {
        streams.chosen.push_back(index.value);
    }
    streams.losslessDvd = reader.Flag("lossless_dvd");
    streams.audioLanguages = reader.Texts("audio_languages");
    streams.allAudio = reader.Flag("all_audio");
    for (const py::object& kind : reader.Get<std::vector<py::object>>("copied"))
    {
        streams.copied.push_back(ReadKind(kind));
    }
    streams.maxSize = ReadLimit(reader.Attribute("max_size"));
    streams.mayUpscale = reader.Flag("may_upscale");
    streams.allowDisabled = reader.Flag("allow_disabled");
    return streams;
}

std::optional<Core::Property::Ratio> ReadRate(const py::object& rate)
{
    if (rate.is_none())
    {
        return std::nullopt;
    }
    if (PyFloat_Check(rate.ptr()) || PyBool_Check(rate.ptr()))
    {
        throw py::type_error("the frame rate is an int or a Fraction");
    }
    // As a record, so that the same rationals are allowed.
    const Core::Property record =
        ToProperty(RecordClass()("", py::module_::import("fractions").attr("Fraction")(rate)));
    return record.GetRatio();
}

Media::JobRequest ReadRequest(const py::object& request)
{
    const RequestReader reader(request);
    Media::JobRequest read;
    read.output = reader.Get<Path>("output").bytes;
    read.streams = ReadStreams(RequestReader(reader.Attribute("streams")));
    for (const RequestReader& merge : reader.Members("merges"))
    {
        read.merges.push_back({merge.Index("base"), merge.Index("overlay")});
    }
    read.codecs = reader.Texts("codecs");
    read.frameRate = ReadRate(reader.Attribute("frame_rate"));
    for (const RequestReader& setting : reader.Members("settings"))
    {
        read.settings.push_back({setting.Get<Text>("path").bytes, ToProperty(setting.Attribute("value"))});
    }
    read.start = reader.Time("start");
    read.end = reader.Time("end");
    read.strict = reader.Flag("strict");
    return read;
}

py::object Plan(const MediaFile& source, const Preset& preset, const py::object& request)
{
    if (!py::isinstance(request, ValueClass("JobRequest")))
    {
        throw py::type_error("the request is a JobRequest");
    }
    const Media::JobRequest read = ReadRequest(request);
    Media::PlannedJob planned;
    {
        const WithoutLock withoutLock;
        planned = Media::PlanJob(*source.file, preset.preset, read);
    }
    return MakeValue("PlannedJob", Graph{planned.graph}, ToPython(planned.output), ToTuple(planned.notes));
}

py::object ReadJob(const Path& path)
{
    Media::JobFile job;
    {
        const WithoutLock withoutLock;
        job = Media::ReadJob(path.bytes);
    }
    return MakeValue("JobFile", ToPython(job.name), Graph{job.graph}, ToTuple(job.notes));
}

} // namespace

void BindPlanning(py::module_& module)
{
    module.def("plan", &Plan, py::arg("source"), py::arg("preset"), py::arg("request"),
               "Plan the job that makes an output file. Nothing is read or written.\n\n"
               "Raise PlanException when source, preset and request do not go together.");
    module.def(
        "parse_setting",
        [](const Text& text) {
            const Media::SettingOverride setting = Media::ParseSetting(text.bytes);
            return MakeValue("SettingOverride", ToPython(setting.path), ToRecord(setting.value));
        },
        py::arg("text"), "Read a setting as people write it: \"video.bitrate=4000000\".");
    module.def("read_job", &ReadJob, py::arg("path"),
               "Read a job document, with notes on what it holds and the graph does not.\n\n"
               "Raise JobException or CoreException, which name the file.");
}

} // namespace Zelnor::Python
