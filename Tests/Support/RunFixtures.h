#pragma once

#include "Tests/Support/Graphs.h"
#include "Tests/Support/TemporaryFolder.h"

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// A preset that makes WAV files.
inline constexpr const char* kWavPreset =
    R"({"wav":{"container":"wav","$$STREAMS$$":{"audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}})";

/// The bytes of a WAV file of a fifth of a second of silence (8000 Hz, mono, 16 bits).
inline std::string SilentWav()
{
    constexpr std::size_t kSize = 3200;
    const auto number = [](std::size_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i)
        {
            text += static_cast<char>(value >> (8 * i) & 0xFFU);
        }
        return text;
    };
    return "RIFF" + number(36 + kSize, 4) + "WAVEfmt " + number(16, 4) + number(1, 2) + number(1, 2) +
           number(8000, 4) + number(16000, 4) + number(2, 2) + number(16, 2) + "data" + number(kSize, 4) +
           std::string(kSize, '\0');
}

/// A job that makes WAV files, all from the first stream of the same source. The names go into the document
/// as they are.
inline GraphPtr WavJob(const std::string& source, const std::vector<std::string>& targets)
{
    std::string nodes = R"({"id":1,"data":{"data":{"source":{"$$TYPE_ID$$":"sourceFile","filePath":")" +
                        source + R"("}}}},{"id":2,"data":{"data":{"streamRaw":{"id":0}}}})";
    std::string links = R"({"from":1,"to":2})";
    for (std::size_t i = 0; i < targets.size(); ++i)
    {
        const std::string id = std::to_string(i + 3);
        nodes += R"(,{"id":)" + id + R"(,"data":{"data":{"target":{"container":"wav","filePath":")" +
                 targets[i] + R"("}}}})";
        links += R"(,{"from":2,"to":)" + id +
                 R"(,"data":{"data":{"format_codec_audio":{"codec_id":"CODEC_ID_PCM_S16LE"}}}})";
    }
    return Loaded(R"({"vertices":[)" + nodes + R"(],"edges":[)" + links + "]}");
}

/// Makes a script that can be given as the ffmpeg program. In it, $target is the file to write.
/// \returns its name
inline std::string MakeScript(const TemporaryFolder& folder, const std::string& lines)
{
    const std::string name = (folder / "ffmpeg").string();
    WriteFile(name, "#!/bin/bash\ntarget=${!#}; target=${target#file:}\n" + lines + "\n");
    ::chmod(name.c_str(), 0755);
    return name;
}

} // namespace Zelnor::Testing
