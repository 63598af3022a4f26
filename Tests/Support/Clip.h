#pragma once

#include "Tests/Support/Process.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// Makes a media file with ffmpeg; `arguments` are all but the program and what keeps it quiet.
inline void MakeClip(const std::vector<std::string>& arguments, const std::string& folder = "")
{
    std::vector<std::string> command = {"ffmpeg", "-nostdin", "-v", "error", "-y"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    ProcessOptions options;
    options.folder = folder;
    const ProcessResult result = RunProcess(command, options);
    if (result.exitCode != 0)
    {
        throw std::runtime_error("ffmpeg cannot make a clip: " + result.messages);
    }
}

namespace details
{

inline std::string ClipBytes(const std::vector<std::string>& arguments)
{
    std::vector<std::string> command = {"ffmpeg", "-nostdin", "-v", "error"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.insert(command.end(), {"-f", "matroska", "pipe:1"});
    const ProcessResult result = RunProcess(command);
    if (result.exitCode != 0)
    {
        throw std::runtime_error("ffmpeg cannot make a clip: " + result.messages);
    }
    return result.output;
}

} // namespace details

/// The bytes of a fifth of a second of video (64x48, 25 fps) and of stereo sound (44100 Hz).
inline const std::string& TinyClip()
{
    static const std::string s_bytes =
        details::ClipBytes({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-f", "lavfi", "-i", "sine=d=0.2",
                            "-ac", "2", "-c:v", "mpeg4", "-c:a", "ac3"});
    return s_bytes;
}

/// The same sound without the video: nothing of it is lost in a file of sound.
inline const std::string& TinySound()
{
    static const std::string s_bytes =
        details::ClipBytes({"-f", "lavfi", "-i", "sine=d=0.2", "-ac", "2", "-c:a", "ac3"});
    return s_bytes;
}

/// The same video without the sound.
inline const std::string& TinyVideo()
{
    static const std::string s_bytes =
        details::ClipBytes({"-f", "lavfi", "-i", "testsrc=s=64x48:d=0.2", "-c:v", "mpeg4"});
    return s_bytes;
}

} // namespace Zelnor::Testing
