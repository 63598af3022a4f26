#pragma once

#include "Tests/Support/Clip.h"
#include "Tests/Support/TemporaryFolder.h"

#include <string>
#include <utility>
#include <vector>

namespace Zelnor::Testing
{

/// Names and texts of the tags that `MakeEverything` gives its file.
inline const std::vector<std::pair<std::string, std::string>>& TagsOfEverything()
{
    static const std::vector<std::pair<std::string, std::string>> s_tags = {
        {"title", "A title"},
        {"artist", "An artist"},
        {"album", "An album"},
        {"album_artist", "Another artist"},
        {"composer", "A composer"},
        {"performer", "A performer"},
        {"publisher", "A publisher"},
        {"copyright", "A copyright"},
        {"comment", "A comment"},
        {"genre", "A genre"},
        {"date", "2020"},
        {"disc", "1"},
        {"track", "2"},
        {"description", "A description"},
        {"location", "+48.2000+016.3700/"},
        {"show", "A show"},
        {"season_number", "3"},
        {"episode_id", "E4"},
        {"synopsis", "A synopsis"},
        {"lyrics", "A line\nand another"},
        {"MUSICBRAINZ_TRACKID", "c1b8-7"},
        {"REPLAYGAIN_TRACK_GAIN", "-3.00 dB"},
        {"MY_OWN_KEY", "Something"},
    };
    return s_tags;
}

/// Makes a Matroska file with a timecode, two chapters, a cover, a font, two languages and tags. One second
/// of video (176x144, 25 fps), stereo sound in German and English, and text subtitles.
/// \returns its name in the folder
inline std::string MakeEverything(const TemporaryFolder& folder, const std::string& name = "all.mkv")
{
    std::string metadata = ";FFMETADATA1\n";
    for (const auto& [key, text] : TagsOfEverything())
    {
        metadata += key + "=" + (key == "lyrics" ? "A line\\\nand another" : text) + "\n";
    }
    metadata += "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=400\ntitle=The first one\n"
                "[CHAPTER]\nTIMEBASE=1/1000\nSTART=400\nEND=1000\ntitle=The second one\n";
    WriteFile(folder / "metadata", metadata);
    WriteFile(folder / "a font.ttf", "font");
    WriteFile(folder / "text.srt", "1\n00:00:00,000 --> 00:00:00,900\nText\n");
    const std::string path = folder.Path().string();
    MakeClip({"-f", "lavfi", "-i", "testsrc=s=64x64:d=0.04", "-frames:v", "1", "cover.png"}, path);
    MakeClip({"-f",
              "lavfi",
              "-i",
              "testsrc=s=176x144:r=25:d=1",
              "-f",
              "lavfi",
              "-i",
              "sine=r=48000:d=1",
              "-i",
              "text.srt",
              "-i",
              "metadata",
              "-map",
              "0",
              "-map",
              "1",
              "-map",
              "1",
              "-map",
              "2",
              "-map_metadata",
              "3",
              "-map_chapters",
              "3",
              "-attach",
              "a font.ttf",
              "-metadata:s:4",
              "mimetype=font/ttf",
              "-attach",
              "cover.png",
              "-metadata:s:5",
              "mimetype=image/png",
              "-metadata:s:0",
              "timecode=01:02:03:04",
              "-metadata:s:1",
              "language=deu",
              "-metadata:s:2",
              "language=eng",
              "-metadata:s:3",
              "language=deu",
              "-c:v",
              "mpeg4",
              "-c:a",
              "pcm_s16le",
              "-ac",
              "2",
              "-c:s",
              "srt",
              name},
             path);
    return name;
}

} // namespace Zelnor::Testing
