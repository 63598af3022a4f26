#pragma once

namespace Zelnor::Tool
{

/// Shows what the libraries log as plain messages on standard error.
class Logging
{
public:
    Logging();
    ~Logging();
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;
};

} // namespace Zelnor::Tool
