#include "Tools/zconf/Console/Logging.h"

#ifdef ZELNOR_WITHOUT_LOG

namespace Zelnor::Tool
{

Logging::Logging(const char*) {}

Logging::~Logging() = default;

} // namespace Zelnor::Tool

#else

#include "Tools/zconf/Console/StandardStreams.h"
#include "Tools/zconf/Console/Text.h"

#include <glog/logging.h>

#include <cstddef>
#include <ctime>
#include <string>

namespace Zelnor::Tool
{

namespace
{

class MessageSink final : public google::LogSink
{
public:
    using google::LogSink::send;

    void send(google::LogSeverity, const char*, const char*, int, const std::tm*, const char* message,
              std::size_t length) override
    {
        WriteMessage("zconf: " + Printable(std::string(message, length)) + "\n");
    }
};

MessageSink& GetSink()
{
    static MessageSink s_sink;
    return s_sink;
}

} // namespace

Logging::Logging(const char* program)
{
    google::InitGoogleLogging(program);
    FLAGS_logtostderr = false;
    FLAGS_alsologtostderr = false;
    // Above the highest severity, so that only the sink writes messages.
    FLAGS_stderrthreshold = google::NUM_SEVERITIES;
    for (int severity = google::GLOG_INFO; severity < google::NUM_SEVERITIES; ++severity)
    {
        google::SetLogDestination(severity, "");
    }
    google::AddLogSink(&GetSink());
}

Logging::~Logging()
{
    google::RemoveLogSink(&GetSink());
    google::ShutdownGoogleLogging();
}

} // namespace Zelnor::Tool

#endif
