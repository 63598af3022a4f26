#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Calls.h"
#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Records.h"
#include "Bindings/Python/Source/Values.h"

#include "Media/Jobs/JobDifferences.h"
#include "Media/Running/JobCheck.h"
#include "Media/Running/JobRun.h"
#include "Media/Running/JobVerification.h"

#include <pybind11/stl.h>

namespace Zelnor::Python
{

namespace
{

using Media::CancelToken;

/// A callback, as the library calls it from the thread that works; nothing for None.
template <class T>
std::function<void(const T&)> ToCallback(Calls& calls, const py::object& function)
{
    if (function.is_none())
    {
        return {};
    }
    return [&calls, &function](const T& value) {
        calls.CallBack([&function, &value] { function(ValueOf(value)); });
    };
}

void RequireFunctions(std::initializer_list<py::handle> functions)
{
    for (const py::handle function : functions)
    {
        if (!function.is_none() && PyCallable_Check(function.ptr()) == 0)
        {
            throw py::type_error("a callback is a function or None");
        }
    }
}

Media::VerificationDepth ReadDepth(const py::object& depth)
{
    const py::object known = ValueClass("VerificationDepth");
    for (const auto candidate :
         {Media::VerificationDepth::Off, Media::VerificationDepth::Quick, Media::VerificationDepth::Full})
    {
        if (depth.is(known(static_cast<int>(candidate))))
        {
            return candidate;
        }
    }
    throw py::type_error("the depth is a VerificationDepth");
}

/// The library takes no name for no folder.
std::string ReadScratch(const std::optional<Path>& scratch)
{
    if (scratch && scratch->bytes.empty())
    {
        throw py::value_error("the scratch folder has no name");
    }
    return scratch ? scratch->bytes : "";
}

py::object Run(Graph& graph, const Path& ffmpeg, bool overwrite, bool strict, const py::object& verification,
               bool keepUnverified, const std::optional<Path>& scratch, const Text& document,
               const py::object& onLoss, const py::object& onProgress, const py::object& onTargetDone,
               const std::optional<CancelToken>& cancel)
{
    RequireFunctions({onLoss, onProgress, onTargetDone});
    Media::RunOptions options;
    options.cancel = cancel.value_or(CancelToken());
    Calls calls(options.cancel);
    options.ffmpeg = ffmpeg.bytes;
    options.overwrite = overwrite;
    options.strict = strict;
    options.verification = ReadDepth(verification);
    options.keepUnverified = keepUnverified;
    options.scratch = ReadScratch(scratch);
    options.document = document.bytes;
    options.onLoss = ToCallback<Media::JobFault>(calls, onLoss);
    options.onProgress = ToCallback<Media::RunProgress>(calls, onProgress);
    options.onTargetDone = ToCallback<Media::TargetResult>(calls, onTargetDone);
    Media::RunResult result;
    const GraphUse use(graph);
    calls.Run([&] { result = Media::RunJob(*graph.graph, options); });
    return MakeValue("RunResult", ToTuple(result.targets));
}

py::list Verify(Graph& graph, const py::object& depth, bool quality, const Path& ffmpeg, const Text& document,
                const py::object& onProgress, const std::optional<CancelToken>& cancel)
{
    RequireFunctions({onProgress});
    Media::VerifyOptions options;
    options.cancel = cancel.value_or(CancelToken());
    Calls calls(options.cancel);
    options.depth = ReadDepth(depth);
    options.quality = quality;
    options.ffmpeg = ffmpeg.bytes;
    options.document = document.bytes;
    options.onProgress = ToCallback<Media::RunProgress>(calls, onProgress);
    std::vector<Media::TargetVerification> targets;
    const GraphUse use(graph);
    calls.Run([&] { targets = Media::VerifyJob(*graph.graph, options); });
    return ToList(targets);
}

py::object Report(Graph& graph, const Text& document)
{
    Media::JobReport report;
    {
        const GraphUse use(graph);
        const WithoutLock withoutLock;
        report = Media::ReportJob(*graph.graph, document.bytes);
    }
    return MakeValue("JobReport", ToTuple(report.faults), ToTuple(report.losses));
}

py::list Check(Graph& graph, const Text& document)
{
    std::vector<Media::JobFault> faults;
    {
        const GraphUse use(graph);
        const WithoutLock withoutLock;
        faults = Media::CheckJob(*graph.graph, document.bytes);
    }
    return ToList(faults);
}

py::list Diff(Graph& one, Graph& other)
{
    std::vector<Media::JobDifference> differences;
    {
        const GraphUse use(one);
        const GraphUse otherUse(other);
        const WithoutLock withoutLock;
        differences = Media::DiffJobs(*one.graph, *other.graph);
    }
    return ToList(differences);
}

void BindCancelToken(py::module_& module)
{
    py::class_<CancelToken> type(module, "CancelToken", py::is_final(),
                                 "A way to stop what is running, from any thread and for good.");
    // Not the members themselves, which would be called without an object for None.
    type.def(
            "cancel", [](const CancelToken& self) { self.Cancel(); }, "Stop everything that has this token.")
        .def_property_readonly(
            "is_cancelled", [](const CancelToken& self) { return self.IsCancelled(); },
            "Whether it was cancelled.");
    Seal(type, &MakeDefault<CancelToken>);
}

} // namespace

void BindRunning(py::module_& module)
{
    BindCancelToken(module);
    const py::object quick =
        MakeValue("VerificationDepth", static_cast<int>(Media::VerificationDepth::Quick));
    module.def("check", &Check, py::arg("graph"), py::arg("document") = Text(),
               "Return every reason why the job cannot be run, as JobFault values. Opens the sources.");
    module.def("report", &Report, py::arg("graph"), py::arg("document") = Text(),
               "Return what check returns, and what of the sources would be lost.");
    module.def("run", &Run, py::arg("graph"), py::kw_only(), py::arg("ffmpeg") = Path{"ffmpeg"},
               py::arg("overwrite").noconvert() = false, py::arg("strict").noconvert() = false,
               py::arg("verification") = quick, py::arg("keep_unverified").noconvert() = false,
               py::arg("scratch") = py::none(), py::arg("document") = Text(), py::arg("on_loss") = py::none(),
               py::arg("on_progress") = py::none(), py::arg("on_target_done") = py::none(),
               py::arg("cancel") = py::none(),
               "Make the targets of a job with ffmpeg; return a RunResult.\n\n"
               "Callbacks are called in this thread. What they raise, and KeyboardInterrupt, stops ffmpeg\n"
               "and passes through. With a scratch folder, ffmpeg writes there, and what is finished and\n"
               "verified is put in its place as one step.\n"
               "Raise JobException, TranscodeFailed, VerificationFailed, RunException.");
    module.def("verify", &Verify, py::arg("graph"), py::kw_only(), py::arg("depth") = quick,
               py::arg("quality").noconvert() = false, py::arg("ffmpeg") = Path{"ffmpeg"},
               py::arg("document") = Text(), py::arg("on_progress") = py::none(),
               py::arg("cancel") = py::none(),
               "Compare the finished files of a job with it; return TargetVerification values.");
    module.def("diff", &Diff, py::arg("one"), py::arg("other"),
               "Return in what two jobs differ, as JobDifference values.");
}

} // namespace Zelnor::Python
