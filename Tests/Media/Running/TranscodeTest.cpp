#include "Media/Running/JobCheck.h"

#include "Media/Jobs/FaultList.h"
#include "Media/Running/JobPreparation.h"
#include "Tests/Support/Graphs.h"
#include "Tests/Support/JobFixtures.h"
#include "Tests/Support/RunFixtures.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using Texts = std::vector<std::string>;

class TranscodeOfJob : public testing::Test
{
protected:
    TranscodeOfJob() { WriteFile(m_folder / "in.wav", SilentWav()); }

    /// What is wrong with a job whose source and raw stream have these further settings.
    Texts FaultsWith(const std::string& source, const std::string& raw) const
    {
        return Sentences(CheckJob(*Loaded(
            R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
            (m_folder / "in.wav").string() + '"' + source +
            R"(}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0)" + raw +
            R"(}}}},{"id":3,"data":{"data":{"target":{"container":"wav","filePath":")" +
            (m_folder / "out.wav").string() +
            R"("}}}}],"edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":)"
            R"({"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}}]})")));
    }

    /// The same with these records as the source and the raw stream. "$file" stands for the name of a file
    /// that is there.
    Texts FaultsOfRecords(std::string source, const std::string& raw) const
    {
        const std::size_t at = source.find("$file");
        source = at == std::string::npos ? source : source.replace(at, 5, (m_folder / "in.wav").string());
        return Sentences(CheckJob(
            *Loaded(R"({"vertices":[{"id":1,"data":{"data":)" + source + R"(}},{"id":2,"data":{"data":)" +
                    raw + R"(}},{"id":3,"data":{"data":{"target":{"container":"wav","filePath":")" +
                    (m_folder / "out.wav").string() +
                    R"("}}}}],"edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":)"
                    R"({"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}}]})")));
    }

    TemporaryFolder m_folder;
};

const std::string kSource = R"({"source":{"$$TYPE_ID$$":"sourceFile","filePath":"$file"}})";
const std::string kRaw = R"({"streamRaw":{"id":0}})";

TEST_F(TranscodeOfJob, OfAnOrdinaryJobHasNoFaults) { EXPECT_EQ(FaultsWith("", ""), Texts()); }

TEST_F(TranscodeOfJob, DoesNotReadEncryptedFiles)
{
    EXPECT_EQ(FaultsWith(R"(,"encryption":"odd")", ""),
              Texts{"node 1, encryption: files encrypted with 'odd' cannot be read"});
}

TEST_F(TranscodeOfJob, DoesNotDecodeInAnotherWay)
{
    EXPECT_EQ(FaultsWith("", R"(,"decoder":"odd")"),
              Texts{"node 2, decoder: there is no decoder 'odd' here"});
}

TEST_F(TranscodeOfJob, MergesOnlyNumbersOfStreamsInAGroup)
{
    EXPECT_EQ(FaultsWith("", R"(,"$$MERGE_WITH$$":5)"),
              Texts{"node 2, $$MERGE_WITH$$: expected a group, found 5"});
    EXPECT_EQ(FaultsWith("", R"(,"$$MERGE_WITH$$":{"a":{"odd":5}})"),
              Texts{"node 2, $$MERGE_WITH$$: expected the number of a stream, found nothing"});
}

TEST_F(TranscodeOfJob, DoesNotTakeWhatItLeavesOut)
{
    EXPECT_EQ(FaultsWith(R"(,"leftOut":{"":0})", ""),
              Texts{"node 2, id: 'leftOut' of node 1 says that stream 0 is left out"});
    EXPECT_EQ(FaultsWith(R"(,"leftOut":{"":9})", ""),
              Texts{"node 1, leftOut: '" + (m_folder / "in.wav").string() + "' does not have a stream 9"});
}

TEST_F(TranscodeOfJob, DoesNotEndAtASource)
{
    const GraphPtr job = Loaded(R"({"vertices":[{"id":1,"data":{"data":{"source":{}}}},)"
                                R"({"id":2,"data":{"data":{"streamRaw":{}}}}],"edges":[{"from":1,"to":2}]})");
    EXPECT_EQ(Sentences(CheckJob(*job)),
              Texts{"node 2: expected a link from this 'streamRaw' to a target, found none"});
}

TEST_F(TranscodeOfJob, ReadsTheNamesOfDecodersAndEncryptionsAsTexts)
{
    EXPECT_EQ(FaultsWith("", R"(,"decoder":5)"), Texts{"node 2, decoder: expected a string, found 5"});
    EXPECT_EQ(FaultsWith(R"(,"encryption":5)", ""), Texts{"node 1, encryption: expected a string, found 5"});
}

TEST_F(TranscodeOfJob, MergesWithoutSettingsOnly)
{
    // The stream has none beside it, so it is merged with itself, which is a fault of its own.
    const std::string itself = "link 2 -> 3, audio stream 0: audio stream 0 cannot be merged into it";
    const auto merged = [this](const std::string& settings) {
        return FaultsWith("", R"(,"$$MERGE_WITH$$":{"a":{"$$MERGE_WITH$$":0)" + settings + "}}");
    };
    const std::string refused = "node 2, $$MERGE_WITH$$: stream 0 can only be merged without settings";
    EXPECT_EQ(merged(""), Texts{itself});
    EXPECT_EQ(merged(R"(,"$$MERGE_SETTINGS$$":{})"), Texts{itself});
    EXPECT_EQ(merged(R"(,"$$MERGE_SETTINGS$$":{"a":1})"), (Texts{refused, itself}));
    EXPECT_EQ(merged(R"(,"$$MERGE_SETTINGS$$":1)"), (Texts{refused, itself}));
}

TEST_F(TranscodeOfJob, MergesStreamsOfTheSource)
{
    EXPECT_EQ(
        FaultsWith("", R"(,"$$MERGE_WITH$$":{"a":{"$$MERGE_WITH$$":1}})"),
        Texts{"node 2, $$MERGE_WITH$$: '" + (m_folder / "in.wav").string() + "' does not have a stream 1"});
    EXPECT_EQ(FaultsWith("", R"(,"$$MERGE_WITH$$":{"a":{"$$MERGE_WITH$$":"0"}})"),
              Texts{"node 2, $$MERGE_WITH$$: expected the number of a stream, found '0'"});
}

TEST_F(TranscodeOfJob, ReadsSourcesThatAreFiles)
{
    EXPECT_EQ(FaultsOfRecords(kSource, kRaw), Texts());
    EXPECT_EQ(FaultsOfRecords(R"({"other":{"$$TYPE_ID$$":"sourceFile","filePath":"$file"}})", kRaw),
              Texts{"node 1: expected a 'source', found 'other'"});
    EXPECT_EQ(FaultsOfRecords(R"({"source":{"$$TYPE_ID$$":"odd","filePath":"$file"}})", kRaw),
              Texts{"node 1, $$TYPE_ID$$: expected 'sourceFile', found 'odd'"});
    EXPECT_EQ(FaultsOfRecords(R"({"source":{"$$TYPE_ID$$":"sourceFile","filePath":"$file\u0000"}})", kRaw),
              Texts{"node 1, filePath: a name cannot hold a NUL byte"});
    EXPECT_EQ(FaultsOfRecords(R"({"source":{"$$TYPE_ID$$":"sourceFile"}})", kRaw),
              Texts{"node 1, filePath: expected a string, found nothing"});
}

TEST_F(TranscodeOfJob, ReadsStreamsThatTheSourceHas)
{
    const std::string file = "'" + (m_folder / "in.wav").string() + "'";
    EXPECT_EQ(FaultsOfRecords(kSource, R"({"streamRaw":{"id":1}})"),
              Texts{"node 2, id: " + file + " does not have a stream 1"});
    EXPECT_EQ(FaultsOfRecords(kSource, R"({"streamRaw":{"id":-1}})"),
              Texts{"node 2, id: " + file + " does not have a stream -1"});
    EXPECT_EQ(FaultsOfRecords(kSource, R"({"streamRaw":{"id":4294967296}})"),
              Texts{"node 2, id: " + file + " does not have a stream 4294967296"});
    EXPECT_EQ(FaultsOfRecords(kSource, R"({"streamRaw":{}})"),
              Texts{"node 2, id: expected an integer, found nothing"});
}

TEST_F(TranscodeOfJob, DecodesAsItsRecordNames)
{
    EXPECT_EQ(FaultsWith("", R"(,"decoder":"DECODER_FFMPEG")"), Texts());
}

TEST_F(TranscodeOfJob, ReadsFilesWhoseEncryptionFFmpegReads)
{
    EXPECT_EQ(FaultsWith(R"(,"encryption":"DVD CSS Protection")", ""), Texts());
}

TEST_F(TranscodeOfJob, NeedsTheTypeOfASource)
{
    EXPECT_EQ(FaultsOfRecords(R"({"source":{"filePath":"$file"}})", kRaw),
              Texts{"node 1, $$TYPE_ID$$: expected a string, found nothing"});
}

TEST_F(TranscodeOfJob, OfItsDocumentAloneHasIndexesThatAStreamCanHave)
{
    const auto faultsOf = [](const std::string& raw) {
        FaultList faults;
        CheckJobDocument(
            *Loaded(R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile",)"
                    R"("filePath":"in.wav"}}}},{"id":2,"data":{"data":{"streamRaw":{)" +
                    raw +
                    R"(}}}},{"id":3,"data":{"data":{"target":{"container":"wav","filePath":"out.wav"}}}}],)"
                    R"("edges":[{"from":1,"to":2},{"from":2,"to":3,"data":{"data":)"
                    R"({"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}}]})"),
            "", faults);
        return Sentences(faults.Get());
    };
    EXPECT_EQ(faultsOf(R"("id":2147483647)"), Texts());
    for (const std::string index : {"2147483648", "-1"})
    {
        EXPECT_EQ(faultsOf(R"("id":)" + index),
                  Texts{"node 2, id: expected the index of a stream, found " + index});
    }
    EXPECT_EQ(faultsOf(""), Texts{"node 2, id: expected an integer, found nothing"});
}

} // namespace
