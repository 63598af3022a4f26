#include "Bindings/Python/Source/Arguments.h"
#include "Bindings/Python/Source/Classes.h"
#include "Bindings/Python/Source/Values.h"

#include "Media/Planning/CodecSupport.h"
#include "Media/Validating/DocumentFault.h"

namespace Zelnor::Python
{

namespace
{

// The enumerations of zelnor/_values.py have the same numbers.
static_assert(Media::DocumentFault::Syntax == 0 && Media::DocumentFault::Container == 7);
static_assert(Media::DocumentFaults::Job == 0 && Media::DocumentFaults::Unknown == 2);

py::object FaultsOf(const Media::DocumentFaults& found)
{
    return MakeValue("DocumentFaults", MakeValue("DocumentKind", static_cast<int>(found.kind)),
                     ToTuple(found.faults), found.isComplete);
}

py::object ValidateText(const Text& text, const Text& name)
{
    Media::DocumentFaults found;
    {
        const WithoutLock withoutLock;
        found = Media::ValidateDocument(text.bytes, name.bytes);
    }
    return FaultsOf(found);
}

py::object ValidatePath(const Path& path)
{
    Media::DocumentFaults found;
    {
        const WithoutLock withoutLock;
        found = Media::ValidateFile(path.bytes);
    }
    return FaultsOf(found);
}

/// None where FFmpeg does not know.
py::object Held(Media::CodecSupport::Answer answer)
{
    return answer == Media::CodecSupport::Unknown ? py::object(py::none())
                                                  : py::bool_(answer == Media::CodecSupport::Yes);
}

py::object Explain(const Text& container, const Text& codec)
{
    Media::CodecSupport support;
    {
        const WithoutLock withoutLock;
        support = Media::ExplainCodecSupport(container.bytes, codec.bytes);
    }
    return MakeValue("CodecSupport", ToPython(support.container), ToPython(support.codec),
                     Held(support.isHeld), ToPython(support.muxer), ToPython(support.encoder),
                     support.isEncodingDisabled, ToPython(support.hasBitrateCurve), ToTuple(support.codecs),
                     ToTuple(support.containers), ToTuple(support.reasons));
}

} // namespace

void BindValidating(py::module_& module)
{
    module.def("validate_document", &ValidateText, py::arg("text"), py::arg("name") = Text(),
               "Return everything that is wrong with the text of a job or a preset: DocumentFaults.\n\n"
               "Places call the document name. No file is opened.");
    module.def("validate_file", &ValidatePath, py::arg("path"),
               "Return everything that is wrong with the job or the preset in a file: DocumentFaults.\n\n"
               "Raise CoreException when the file cannot be read.");
    module.def("explain_codec_support", &Explain, py::arg("container"), py::arg("codec_id"),
               "Return whether streams of a codec can be made in files of a container: CodecSupport.\n\n"
               "Raise PlanException for a container or a codec that the vocabulary does not have.");
}

} // namespace Zelnor::Python
