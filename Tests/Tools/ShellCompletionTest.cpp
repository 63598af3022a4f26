#include "Tests/Support/ZconfTest.h"

namespace
{

using namespace Zelnor::Testing;

class ShellCompletion : public ZconfTest
{
protected:
    /// What the scripts of the shells are answered.
    std::string Answer(std::vector<std::string> words) const
    {
        words.insert(words.begin(), "__complete");
        const ProcessResult result = Zconf(std::move(words));
        ExpectQuietSuccess(result);
        return result.output;
    }
};

TEST_F(ShellCompletion, DescribesCommandsAndOptions)
{
    EXPECT_EQ(Answer({"job", "di"}),
              "words\ndiff\tCompare two jobs: exit code 0 if they are equal, else 1 with the differences\n");
    EXPECT_EQ(
        Answer({"job", "run", "--dry"}),
        "words\n--dry-run\tPrint the ffmpeg commands, quoted for a shell, instead of running them, and how "
        "large the output files will be\n");
}

TEST_F(ShellCompletion, NamesCodecsAsTheListsDoAndAsPeopleTypeThem)
{
    EXPECT_EQ(Answer({"bitrate", "--codec", "CODEC_ID_H26"}),
              "words\nCODEC_ID_H261\nCODEC_ID_H263\nCODEC_ID_H263P\nCODEC_ID_H263I\nCODEC_ID_H264\nCODEC_ID_"
              "H265\n");
    EXPECT_EQ(Answer({"convert", "a", "b", "--codec=vp"}),
              "words\nvp3\nvp5\nvp6\nvp6f\nvp6a\nvp8\nvp9\nvplayer\n");
}

TEST_F(ShellCompletion, NamesOtherVocabulary)
{
    EXPECT_EQ(Answer({"extensions", "--container", "matr"}), "words\nmatroska\n");
    EXPECT_EQ(Answer({"extensions", "MP"}), "words\nMP4\nMPEG\nMP3\n");
    EXPECT_EQ(Answer({"explain", "SAMPLE_FMT_S3"}), "words\nSAMPLE_FMT_S32\nSAMPLE_FMT_S32P\n");
    EXPECT_EQ(Answer({"list", "layouts", "5POINT1_"}), "words\n5POINT1_BACK\n");
    EXPECT_EQ(Answer({"convert", "a", "b", "--copy", "sub"}), "words\nsubtitles\n");
}

TEST_F(ShellCompletion, NamesSettingsAndTheirWords)
{
    EXPECT_EQ(Answer({"preset", "new", "--set", "video.bit"}),
              "words\nvideo.bitrate=\nvideo.bitrate_mode=\n");
    EXPECT_EQ(Answer({"convert", "a", "b", "--set=audio.layout=STEREO_"}),
              "words\naudio.layout=STEREO_DOWNMIX\n");
    EXPECT_EQ(Answer({"job", "new", "--set", "container=matr"}), "words\ncontainer=matroska\n");
}

TEST_F(ShellCompletion, OffersPresetsAndFilesForAPreset)
{
    EXPECT_EQ(Answer({"job", "new", "--preset", "fla"}), "files\nflac\n");
}

TEST_F(ShellCompletion, KnowsTheCommandsThatHelpIsAskedFor)
{
    EXPECT_EQ(Answer({"help", "job", "d"}), "words\ndraw\ndiff\n");
    EXPECT_EQ(Answer({"help", "dance", ""}), "words\n");
}

TEST_F(ShellCompletion, HasAnAnswerToAnything)
{
    EXPECT_EQ(Answer({}), Answer({""}));
    EXPECT_EQ(Answer({"\n", "\xff", "$(touch x)", ""}), "words\n");
    EXPECT_EQ(Answer({"--", "--", "--help", ""}), "words\n");
    EXPECT_EQ(Files(), std::vector<std::string>{});
}

} // namespace
