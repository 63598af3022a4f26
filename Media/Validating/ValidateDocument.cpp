#include "Media/JsonText.h"
#include "Media/Validating/DocumentFault.h"
#include "Media/Validating/JobElements.h"
#include "Media/Validating/JobValidation.h"
#include "Media/Validating/PresetValidation.h"

namespace Zelnor::Media
{

namespace
{

/// A job has lists of nodes and links. A preset has one member, whose name is free.
DocumentFaults::Kind KindOf(const JsonIndex& index)
{
    const bool hasSeveral = index.ChildAt(0, 1).has_value();
    for (const JsonIndex::Id member : index.Children(0))
    {
        const std::string key = index.KeyOf(member);
        const bool isList = index.KindOf(member) == JsonIndex::Kind::Array;
        if ((key == "vertices" || key == "edges") && (isList || hasSeveral))
        {
            return DocumentFaults::Job;
        }
    }
    return DocumentFaults::Preset;
}

} // namespace

DocumentFaults ValidateDocument(const std::string& text, const std::string& name)
{
    FaultCollector faults(text);
    if (const auto fault = FindJsonFault(text))
    {
        faults.AddSyntax(*fault, Place{name});
        return faults.Finish(DocumentFaults::Unknown);
    }
    const JsonPart document = {text, 0, JsonIndex(text, kJobLevels)};
    if (document.index.KindOf(0) != JsonIndex::Kind::Object)
    {
        faults.Add(DocumentFault::Form, Place{name},
                   std::string("expected a job (an object with \"vertices\" and \"edges\") or a preset (an "
                               "object with one member), found ") +
                       KindText(document.index, 0),
                   document, 0);
        return faults.Finish(DocumentFaults::Unknown);
    }
    const DocumentFaults::Kind kind = KindOf(document.index);
    if (kind == DocumentFaults::Job)
    {
        ValidateJob(text, document, name, faults);
    }
    else
    {
        ValidatePreset(document, name, faults);
    }
    return faults.Finish(kind);
}

DocumentFaults ValidateFile(const ioPath& path)
{
    const std::string name = path.utf8string();
    return ValidateDocument(ReadAll(*Core::FileDataInput::Create(path)), name);
}

} // namespace Zelnor::Media
