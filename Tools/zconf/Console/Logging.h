#pragma once

namespace Zelnor::Tool
{

/// Shows what the libraries log as plain messages on standard error, and writes no log files.
class Logging
{
public:
    explicit Logging(const char* program);
    ~Logging();
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;
};

} // namespace Zelnor::Tool
