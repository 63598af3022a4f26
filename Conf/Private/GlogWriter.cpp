#include "Conf/Private/GlogWriter.h"

#include <glog/logging.h>

void ZelnorWriteToGlog(const char* file, int line, const char* message)
{
    google::LogMessage(file, line).stream() << message;
}
