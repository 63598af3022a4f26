#include "Media/Probe/FFmpegLog.h"

#include "Media/Probe/MessageScope.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/log.h>
}

#include <string>

namespace
{

using namespace Zelnor::Media;

bool Offer(int level, const char* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const bool isKept = KeepFFmpegMessage(level, format, arguments);
    va_end(arguments);
    return isKept;
}

TEST(FFmpegLog, KeepsTheLastErrorOfAProbe)
{
    const MessageScope scope;
    EXPECT_TRUE(Offer(AV_LOG_ERROR, "first %d\n", 1));
    EXPECT_TRUE(Offer(AV_LOG_FATAL, "second %s.\r\n", "one"));
    EXPECT_EQ(scope.Last(), "second one");
    EXPECT_TRUE(Offer(AV_LOG_WARNING, "a warning"));
    EXPECT_TRUE(Offer(AV_LOG_ERROR, "\n"));
    EXPECT_EQ(scope.Last(), "second one");
}

TEST(FFmpegLog, LeavesOtherMessagesToTheApplication)
{
    EXPECT_FALSE(Offer(AV_LOG_ERROR, "not of a probe"));
    EXPECT_FALSE(Offer(AV_LOG_DEBUG, "nor this"));
}

TEST(FFmpegLog, GivesMessagesToTheInnermostProbe)
{
    const MessageScope outer;
    Offer(AV_LOG_ERROR, "outer");
    {
        const MessageScope inner;
        Offer(AV_LOG_ERROR, "inner");
        EXPECT_EQ(inner.Last(), "inner");
    }
    EXPECT_EQ(outer.Last(), "outer");
}

TEST(FFmpegLog, CutsAMessageThatIsTooLong)
{
    const MessageScope scope;
    EXPECT_TRUE(Offer(AV_LOG_ERROR, "%s", std::string(5000, 'x').c_str()));
    EXPECT_EQ(scope.Last(), std::string(511, 'x'));
}

} // namespace
