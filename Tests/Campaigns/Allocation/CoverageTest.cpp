// Every function that the libraries export is an operation of the campaign, or says here why not.

#include "Tests/Campaigns/Allocation/Operations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>
#include <string_view>

namespace Zelnor::Testing
{

namespace
{

/// Functions that no row names.
constexpr std::string_view kElsewhere[] = {
    // They start processes.
    "Media::DrawWithGraphviz",
    "Media::MakeJobPage",
    "Media::AskSlurm",
    "Media::CancelSlurm",
    "Media::RunBatch",
    "Media::RunBatchJob",
    "Media::RunFilter",
    "Media::RunJob",
    "Media::RunResult::IsDone",
    "Media::SubmitBatch",
    // It starts threads, and has its own ways when memory runs out in one of them.
    "Media::PlanBatch",
    // It only joins texts.
    "Media::MakeBatchPage",
    // Other rows use them.
    "Conf::details::Attach",
    "Conf::IFormat::IFormat",
    "Conf::IFormat::operator=",
    "Conf::IFormatCodec::IFormatCodec",
    "Conf::IFormatCodecAudio::IFormatCodecAudio",
    "Conf::IFormatCodecSubtitle::IFormatCodecSubtitle",
    "Conf::IFormatCodecVideo::IFormatCodecVideo",
    "Conf::IFormatFile::IFormatFile",
    "Conf::ITranscodingMetaGraph::ITranscodingMetaGraph",
    "Core::AtomicFileDataOutput::AtomicFileDataOutput",
    "Core::AtomicFileDataOutput::Discard",
    "Core::AtomicFileDataOutput::OpenFolder",
    "Core::AtomicFileDataOutput::OpenTemporary",
    "Core::AtomicFileDataOutput::ReasonAgainstUse",
    "Core::AtomicFileDataOutput::Write",
    "Core::FileDataInput::FileDataInput",
    "Core::FileDataInput::Read",
    "Core::FileDataOutput::FileDataOutput",
    "Core::FileDataOutput::Write",
    "Core::IsInvisibleControl",
    "Core::JsonZelnorStreamIn::Fill",
    "Core::JsonZelnorStreamOut::Flush",
    "Core::MemoryDataInput::MemoryDataInput",
    "Core::MemoryDataInput::Read",
    "Core::MemoryDataOutput::MemoryDataOutput",
    "Core::Property::AppendValue",
    "Core::Property::CopyChildrenFrom",
    "Core::Property::FindToSet",
    "Core::Property::GetLastChild",
    "Core::Property::HasEqualValue",
    "Core::Property::NoSuchChild",
    "Core::Property::NotApplicable",
    "Core::Property::OtherKind",
    "Core::Property::PutChild",
    "Core::Property::TooLarge",
    "Core::ParseRecord",
    "Core::PropertyReader::Bool",
    "Core::PropertyReader::Double",
    "Core::PropertyReader::EndArray",
    "Core::PropertyReader::EndObject",
    "Core::PropertyReader::Int64",
    "Core::PropertyReader::IsComplete",
    "Core::PropertyReader::Key",
    "Core::PropertyReader::Null",
    "Core::PropertyReader::StartArray",
    "Core::PropertyReader::StartObject",
    "Core::PropertyReader::String",
    "Core::PropertyReader::Uint64",
    "Core::ReadUpTo",
    "Core::Utf8CodePoint",
    "Media::Batch::DocumentOf",
    "Media::Batch::JobOf",
    "Media::Batch::OutputOf",
    "Media::Batch::PathOf",
    "Media::BatchResult::Speed",
    "Media::BatchStatus::CountOf",
    "Media::BatchStatus::IsDone",
    "Media::CommandsOf",
    "Media::IsPending",
    "Media::FFmpegPass::Arguments",
    "Media::DocumentFault::Name",
    "Media::DocumentFault::Sentence",
    "Media::JobFault::Name",
    "Media::JobFault::Sentence",
    "Media::MakeFFmpegArguments",
    "Media::Place::At",
    "Media::Place::TextInDocument",
    "Media::Place::Under",
    "Media::PresetFile::GetStreamCount",
    "Media::PresetFile::GetStreamIndexes",
    "Media::PresetFile::PresetFile",
    "Media::TargetDifference::Sentence",
    "Media::details::Attach",
    "Media::details::TagPlace",
    "details::Attach",
    "PixFmtDescription::PixFmtDescription",
    "PixFmtDescription::RecordsMaker",
    "intrusive_ptr_add_ref",
    "intrusive_ptr_release",
    "ioPath::utf8string",
    // They keep a message for the exception of a probe, in FFmpeg's own call.
    "Media::KeepFFmpegMessage",
    "Media::KeepFFmpegMessages",
};

/// Whether the function counts references, in a class that implements the counting itself.
bool CountsReferences(const std::string& function)
{
    const std::string name = function.substr(function.rfind(':') + 1);
    return name == "AddRef" || name == "Release" || name == "GetRefCount";
}

/// "Core::Property::Add" for the signature of a function of ours; empty for everything else.
std::string FunctionName(std::string name)
{
    constexpr std::string_view kNamespace = "Zelnor::";
    const std::size_t end = name.find('(');
    if (end == std::string::npos || name.compare(0, kNamespace.size(), kNamespace) != 0)
    {
        return "";
    }
    name = name.substr(kNamespace.size(), end - kNamespace.size());
    name = name.substr(0, name.find("[abi:"));
    if (CountsReferences(name))
    {
        return "";
    }
    return name.find(' ') != std::string::npos || name.find('~') != std::string::npos ? "" : name;
}

std::set<std::string> ExportedFunctions()
{
    std::set<std::string> names;
    std::ifstream file(ZELNOR_SOURCE_DIR "/Tests/Package/exported_symbols.txt");
    // "ZelnorCore Zelnor::Core::Property::Count() const"
    for (std::string line; std::getline(file, line);)
    {
        const std::size_t space = line.find(' ');
        if (ZELNOR_HAS_MEDIA || line.compare(0, space, "ZelnorMedia") != 0)
        {
            names.insert(FunctionName(line.substr(space + 1)));
        }
    }
    names.erase("");
    return names;
}

TEST(AllocationCoverage, EveryExportedFunctionIsAnOperationOfTheCampaign)
{
    std::set<std::string> missing = ExportedFunctions();
    EXPECT_GT(missing.size(), 200u);
#if ZELNOR_HAS_MEDIA
    const Operations ofMedia = MediaOperations();
#else
    const Operations ofMedia;
#endif
    for (const Operations& rows : {CoreOperations(), ConfOperations(), ofMedia})
    {
        for (const Operation& row : rows)
        {
            missing.erase(row.function);
        }
    }
    for (const std::string_view function : kElsewhere)
    {
        missing.erase(std::string(function));
    }
    EXPECT_THAT(missing, testing::IsEmpty());
}

} // namespace

} // namespace Zelnor::Testing
