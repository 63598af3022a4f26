#include "Media/Running/JobPreparation.h"

#include "Media/MediaException.h"
#include "Media/Planning/Containers.h"
#include "Media/Running/JobCheck.h"
#include "Media/Running/JobRun.h"
#include "Tests/Support/Clip.h"
#include "Tests/Support/Expect.h"
#include "Tests/Support/RunFixtures.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

/// Jobs whose targets are their own sources, whatever way they are spelled.
class PreparedJob : public testing::Test
{
protected:
    PreparedJob()
    {
        for (const char* const name : {"a.wav", "b.wav"})
        {
            WriteFile(Name(name), SilentWav());
        }
        fs::create_directory(Name("sub"));
        fs::create_directory_symlink("sub", Name("folder"));
    }

    std::string Name(const std::string& name) const { return (m_folder / name).string(); }

    /// A job that makes each second file from the first one beside it. The nodes of the targets are 3, 6, ...
    GraphPtr Job(const std::vector<std::pair<std::string, std::string>>& files,
                 const std::string& container = "wav") const
    {
        std::string nodes;
        std::string links;
        int id = 1;
        for (const auto& [source, target] : files)
        {
            const std::string one = std::to_string(id++);
            const std::string raw = std::to_string(id++);
            const std::string made = std::to_string(id++);
            nodes += R"({"id":)" + one +
                     R"(,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" + Name(source) +
                     R"("}}}},{"id":)" + raw + R"(,"data":{"data":{"streamRaw":{"id":0}}}},{"id":)" + made +
                     R"(,"data":{"data":{"target":{"container":")" + container + R"(","filePath":")" +
                     Name(target) + R"("}}}},)";
            links += R"({"from":)" + one + R"(,"to":)" + raw + R"(},{"from":)" + raw + R"(,"to":)" + made +
                     R"(,"data":{"data":{"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}},)";
            // The topology asks for one piece: every target has a stream of the first source, too.
            if (made != "3")
            {
                links += R"({"from":2,"to":)" + made +
                         R"(,"data":{"data":{"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}},)";
            }
        }
        nodes.pop_back();
        links.pop_back();
        return Loaded(R"({"vertices":[)" + nodes + R"(],"edges":[)" + links + "]}");
    }

    static std::vector<std::string> Faults(const Conf::ITranscodingMetaGraph& job)
    {
        std::vector<std::string> sentences;
        for (const JobFault& fault : CheckJob(job))
        {
            sentences.push_back(fault.Sentence());
        }
        return sentences;
    }

    TemporaryFolder m_folder;
};

TEST_F(PreparedJob, DoesNotReplaceASourceOfAnotherTarget)
{
    fs::create_symlink("b.wav", Name("symbolic.wav"));
    fs::create_hard_link(Name("b.wav"), Name("hard.wav"));
    const std::string relative = fs::relative(Name("b.wav"), m_folder.Path()).string();
    for (const std::string& name :
         {std::string("b.wav"), "./" + relative, std::string("sub/../b.wav"), std::string(".//b.wav"),
          std::string("folder/../b.wav"), std::string("symbolic.wav"), std::string("hard.wav")})
    {
        SCOPED_TRACE(name);
        const GraphPtr job = Job({{"a.wav", name}, {"b.wav", "out.wav"}});
        EXPECT_THAT(Faults(*job), testing::Contains("node 3, filePath: the target is a source of the job: '" +
                                                    Name(name) + "'"));
        RunOptions options;
        options.overwrite = true;
        options.ffmpeg = MakeScript(m_folder, "touch " + Name("started"));
        options.document = "job.json";
        const Thrown thrown = ExpectThrow<JobException>([&] { RunJob(*job, options); });
        EXPECT_EQ(thrown.Get<MediaException::TagNode>(), 3);
        EXPECT_FALSE(fs::exists(Name("started")));
        EXPECT_EQ(ReadFile(Name("b.wav")), SilentWav());
    }
}

TEST_F(PreparedJob, DoesNotMakeOneFileTwice)
{
    fs::create_symlink("new.wav", Name("dangling.wav"));
    fs::create_symlink("dangling.wav", Name("again.wav"));
    fs::create_symlink("../new.wav", Name("sub/up.wav"));
    for (const std::string& name :
         {std::string("new.wav"), std::string(".//new.wav"), std::string("sub/../new.wav"),
          std::string("dangling.wav"), std::string("again.wav"), std::string("folder/up.wav")})
    {
        SCOPED_TRACE(name);
        EXPECT_THAT(Faults(*Job({{"a.wav", "new.wav"}, {"b.wav", name}})),
                    testing::Contains("node 6, filePath: node 3 has the same target: '" + Name(name) + "'"));
    }
    EXPECT_THAT(
        Faults(*Job({{"a.wav", "sub/x.wav"}, {"b.wav", "folder/x.wav"}})),
        testing::Contains("node 6, filePath: node 3 has the same target: '" + Name("folder/x.wav") + "'"));
}

TEST_F(PreparedJob, DoesNotReplaceItsOwnDocument)
{
    WriteFile(Name("job.json"), "{}");
    RunOptions options;
    options.overwrite = true;
    options.document = Name("sub/../job.json");
    const Thrown thrown = ExpectThrow<JobException>([&] { RunJob(*Job({{"a.wav", "job.json"}}), options); });
    EXPECT_EQ(thrown.description, options.document +
                                      ": node 3, filePath: the target is the job's own document: '" +
                                      Name("job.json") + "'");
    EXPECT_EQ(ReadFile(Name("job.json")), "{}");
}

TEST_F(PreparedJob, DoesNotReadPipes)
{
    ASSERT_EQ(::mkfifo(Name("pipe.wav").c_str(), 0600), 0);
    EXPECT_THAT(Faults(*Job({{"pipe.wav", "out.wav"}})),
                ElementsAre("node 1, filePath: " + Name("pipe.wav") +
                            ": cannot be read: expected a regular file, found a pipe"));
}

TEST_F(PreparedJob, WritesNoDevicesButNull)
{
    fs::create_symlink("/dev/full", Name("full.wav"));
    fs::create_symlink("/dev/null", Name("null.wav"));
    EXPECT_THAT(Faults(*Job({{"a.wav", "full.wav"}})),
                ElementsAre("node 3, filePath: cannot write '" + Name("full.wav") + "': it is a device"));
    EXPECT_THAT(Faults(*Job({{"a.wav", "null.wav"}})), IsEmpty());
}

TEST_F(PreparedJob, WritesNothingThatIsOnlyOpen)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    fs::create_symlink("/proc/self/fd/" + std::to_string(ends[1]), Name("pipe.wav"));
    WriteFile(Name("file"), "");
    const int removed = ::open(Name("file").c_str(), O_WRONLY | O_CLOEXEC);
    fs::remove(Name("file"));
    fs::create_symlink("/proc/self/fd/" + std::to_string(removed), Name("removed.wav"));
    for (const std::string& name : {Name("pipe.wav"), Name("removed.wav")})
    {
        EXPECT_THAT(Faults(*Job({{"a.wav", name.substr(name.rfind('/') + 1)}})),
                    ElementsAre("node 3, filePath: cannot write '" + name + "': it has no name of its own"));
    }
    ::close(ends[0]);
    ::close(ends[1]);
    ::close(removed);
}

TEST_F(PreparedJob, MakesFilesInFoldersAlone)
{
    fs::create_directory(Name("sub.wav"));
    EXPECT_THAT(Faults(*Job({{"a.wav", "sub.wav"}})),
                ElementsAre("node 3, filePath: cannot write '" + Name("sub.wav") + "': Is a directory"));
    EXPECT_THAT(
        Faults(*Job({{"a.wav", "b.wav/out.wav"}})),
        ElementsAre("node 3, filePath: cannot write '" + Name("b.wav/out.wav") + "': Not a directory"));
}

TEST_F(PreparedJob, FollowsNoLinksInACircle)
{
    fs::create_symlink("there.wav", Name("out.wav"));
    fs::create_symlink("out.wav", Name("there.wav"));
    EXPECT_THAT(Faults(*Job({{"a.wav", "out.wav"}})),
                ElementsAre("node 3, filePath: cannot write '" + Name("out.wav") +
                            "': Too many levels of symbolic links"));
}

TEST_F(PreparedJob, MakesNoFileWhoseNameIsTooLong)
{
    const std::string name = std::string(NAME_MAX - 3, 'x') + ".wav";
    EXPECT_THAT(Faults(*Job({{"a.wav", name}})),
                ElementsAre("node 3, filePath: cannot write '" + Name(name) + "': File name too long"));
    EXPECT_THAT(Faults(*Job({{"a.wav", name.substr(1)}})), IsEmpty());
}

TEST_F(PreparedJob, WritesOnlyContainersThatAreOneFile)
{
    for (const char* const container :
         {"hls", "dash", "segment", "ssegment", "stream_segment", "tee", "fifo", "null", "rtsp", "sap",
          "webm_chunk", "hds", "smoothstreaming", "uncodedframecrc", "ffmetadata,hls"})
    {
        SCOPED_TRACE(container);
        const std::vector<std::string> faults = Faults(*Job({{"a.wav", "out.m3u8"}}, container));
        const std::string name = container;
        const std::string nearest = name == "ffmetadata,hls" ? "; did you mean 'ffmetadata'?" : "";
        const std::string expected =
            FindMuxer(container) == nullptr
                ? "node 3, container: the installed FFmpeg cannot write the container '" + name + "'" +
                      nearest
                : "node 3, container: the container '" + name + "' is not written as one file";
        EXPECT_THAT(faults, ElementsAre(expected));
    }
}

/// Stands for a file system that knows more names for a file than can be told before it is there.
TEST_F(PreparedJob, DoesNotReplaceATargetThatIsDoneUnderAnotherName)
{
    WriteFile(Name("two.wav"), "old");
    RunOptions options;
    options.overwrite = true;
    options.ffmpeg = MakeScript(m_folder, "echo made > \"$target\"");
    options.verification = VerificationDepth::Off;
    options.onTargetDone = [this](const TargetResult&) {
        fs::remove(Name("two.wav"));
        fs::create_hard_link(Name("one.wav"), Name("two.wav"));
    };
    const Thrown thrown = ExpectThrow<RunException>([&] {
        RunJob(*WavJob(Name("a.wav"), {Name("one.wav"), Name("two.wav")}), options);
    });
    EXPECT_EQ(thrown.description,
              "Cannot write '" + Name("two.wav") + "': it is a file that the job reads or has made");
    EXPECT_EQ(ReadFile(Name("one.wav")), "made\n");
}

TEST_F(PreparedJob, RefusesALossWhereItIsStrict)
{
    MakeClip({"-i", Name("a.wav"), "-metadata", "my_own_key=x", "-f", "flac", Name("in.flac")});
    const GraphPtr job = WavJob(Name("in.flac"), {Name("out.wav")});
    RunOptions options;
    options.ffmpeg = MakeScript(m_folder, "cp '" + Name("a.wav") + "' \"$target\"");
    options.strict = true;
    EXPECT_EQ(ExpectThrow<JobException>([&] { RunJob(*job, options); }).description,
              "node 3: container wav cannot hold the tags 'my_own_key'");
    EXPECT_FALSE(fs::exists(Name("out.wav")));
    options.strict = false;
    EXPECT_TRUE(RunJob(*job, options).IsDone());
}

TEST_F(PreparedJob, NamesTheSourceOfALossWhereItHasSeveral)
{
    MakeClip({"-i", Name("a.wav"), "-metadata", "my_own_key=x", "-f", "flac", Name("in.flac")});
    const GraphPtr job = Loaded(
        R"({"vertices":[{"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
        Name("a.wav") + R"("}}}},{"id":2,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
        Name("in.flac") +
        R"("}}}},{"id":3,"data":{"data":{"streamRaw":{"id":0}}}},{"id":4,"data":{"data":{"streamRaw":{"id":0}}}},
               {"id":5,"data":{"data":{"target":{"container":"mp4","filePath":")" +
        Name("out.mp4") + R"("}}}}],
               "edges":[{"from":1,"to":3},{"from":2,"to":4},
               {"from":3,"to":5,"data":{"data":{"format_codec_audio":{"codec_id":"CODEC_ID_AAC"}}}},
               {"from":4,"to":5,"data":{"data":{"format_codec_audio":{"codec_id":"CODEC_ID_AAC"}}}}]})");
    RunOptions options;
    options.ffmpeg = MakeScript(m_folder, "exit 1");
    options.strict = true;
    EXPECT_EQ(ExpectThrow<JobException>([&] { RunJob(*job, options); }).description,
              "node 5: container mp4 cannot hold the tags 'my_own_key' (source '" + Name("in.flac") + "')");
}

} // namespace
