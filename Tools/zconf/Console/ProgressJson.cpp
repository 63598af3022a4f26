#include "Tools/zconf/Console/ProgressJson.h"

#include "Tools/zconf/Console/Text.h"
#include "Tools/zconf/Console/TimeText.h"
#include "Tools/zconf/Console/VisibleJson.h"

#include "Core/Interfaces/JsonMemory.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cmath>
#include <cstdint>

namespace Zelnor::Tool
{

namespace
{

/// One object, whose members are added in order.
class Line
{
public:
    explicit Line(const char* event)
    {
        m_writer.StartObject();
        Add("event", std::string(event));
    }

    void Add(const char* key, const std::string& text)
    {
        m_writer.Key(key);
        AddString(text);
    }
    void Add(const char* key, std::uint64_t number)
    {
        m_writer.Key(key);
        m_writer.Uint64(number);
    }
    void Add(const char* key, double number)
    {
        if (std::isfinite(number))
        {
            m_writer.Key(key);
            m_writer.Double(number);
        }
    }
    void Add(const char* key, bool value)
    {
        m_writer.Key(key);
        m_writer.Bool(value);
    }
    void Add(const char* key, const std::vector<std::string>& texts)
    {
        m_writer.Key(key);
        m_writer.StartArray();
        for (const std::string& text : texts)
        {
            AddString(text);
        }
        m_writer.EndArray();
    }

    void Add(const char* key, const std::vector<Media::VideoQuality>& videos)
    {
        m_writer.Key(key);
        m_writer.StartArray();
        for (const Media::VideoQuality& video : videos)
        {
            m_writer.StartObject();
            Add("place", video.place.TextInDocument());
            if (video.psnr)
            {
                Add("psnr", *video.psnr);
            }
            Add("ssim", video.ssim);
            m_writer.EndObject();
        }
        m_writer.EndArray();
    }

    std::string End()
    {
        m_writer.EndObject();
        return std::string(m_buffer.GetString(), m_buffer.GetSize()) + "\n";
    }

private:
    using Buffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, Core::JsonMemory>;

    void AddString(const std::string& text)
    {
        const std::string shown = Utf8Text(text);
        m_writer.String(shown.data(), static_cast<rapidjson::SizeType>(shown.size()));
    }

    Buffer m_buffer;
    rapidjson::Writer<Buffer, rapidjson::UTF8<>, VisibleUtf8, Core::JsonMemory> m_writer{m_buffer};
};

} // namespace

std::string ProgressJson(const Media::RunProgress& progress)
{
    Line line("progress");
    line.Add("target", static_cast<std::uint64_t>(progress.target));
    line.Add("targets", static_cast<std::uint64_t>(progress.targetCount));
    line.Add("file", progress.file);
    line.Add("pass", static_cast<std::uint64_t>(progress.pass));
    line.Add("passes", static_cast<std::uint64_t>(progress.passCount));
    line.Add("done", static_cast<double>(progress.done) / kSecond);
    if (progress.duration)
    {
        line.Add("duration", static_cast<double>(*progress.duration) / kSecond);
    }
    if (progress.speed > 0)
    {
        line.Add("speed", progress.speed);
    }
    if (progress.part)
    {
        line.Add("part", *progress.part);
    }
    if (progress.isVerifying)
    {
        line.Add("verifying", true);
    }
    return line.End();
}

std::string DoneJson(const Media::TargetResult& target)
{
    Line line("done");
    line.Add("file", target.file);
    line.Add("seconds", target.seconds);
    line.Add("size", target.size);
    line.Add("warnings", target.warnings);
    return line.End();
}

std::string CancelledJson(const Media::TargetResult& target)
{
    Line line("cancelled");
    line.Add("file", target.file);
    return line.End();
}

std::string FailedJson(const std::string& file, const std::vector<std::string>& messages)
{
    Line line("failed");
    line.Add("file", file);
    line.Add("messages", messages);
    return line.End();
}

std::string VerifiedJson(const Media::TargetVerification& target)
{
    std::vector<std::string> differences;
    for (const Media::TargetDifference& difference : target.differences)
    {
        differences.push_back(difference.Sentence());
    }
    Line line("verified");
    line.Add("file", target.file);
    line.Add("differences", differences);
    line.Add("notes", target.notes);
    line.Add("quality", target.quality);
    return line.End();
}

} // namespace Zelnor::Tool
