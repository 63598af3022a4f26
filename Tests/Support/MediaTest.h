#pragma once

#include "Tests/Support/Clip.h"
#include "Tests/Support/MediaInfo.h"
#include "Tests/Support/ZconfTest.h"

#include <string>
#include <vector>

namespace Zelnor::Testing
{

/// Makes clips, jobs and files from them.
class MediaTest : public ZconfTest
{
protected:
    void Make(const std::vector<std::string>& arguments) const { MakeClip(arguments, Folder().string()); }

    /// Makes the job "job.json".
    ProcessResult New(const std::string& preset, const std::string& input, const std::string& output,
                      std::vector<std::string> more = {}) const
    {
        std::vector<std::string> words = {
            "job", "new", "-p", preset, "--input=" + input, "--output=" + output, "-o", "job.json"};
        words.insert(words.end(), more.begin(), more.end());
        return Zconf(words);
    }
    ProcessResult RunJob(std::vector<std::string> more = {}, const ProcessOptions& options = {}) const
    {
        std::vector<std::string> words = {"job", "run", "job.json"};
        words.insert(words.end(), more.begin(), more.end());
        return Zconf(words, options);
    }
    /// Replaces a text in "job.json", which must be there.
    void Edit(const std::string& from, const std::string& to) const
    {
        std::string text = Read("job.json");
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from << " in " << text;
        Write("job.json", text.replace(place, from.size(), to));
    }
    MediaInfo Info(const std::string& name) const { return ReadMediaInfo((Folder() / name).string()); }

    /// A preset file of these streams.
    std::string Preset(const std::string& container, const std::string& streams) const
    {
        return Write("preset.json",
                     R"({"p":{"container":")" + container + R"(","$$STREAMS$$":)" + streams + "}}");
    }
};

} // namespace Zelnor::Testing
