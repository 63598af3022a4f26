#pragma once

// Private to the libraries, not installed.

#include "Core/Interfaces/Exception.h"

#include <utility>

/// Defines what `ZELNOR_TAG` declares, with Boost's operator, which the one of our own would hide.
#define ZELNOR_ATTACH_TAG(Tag)                                                                               \
    void Attach(const boost::exception& exception, Tag&& tag)                                                \
    {                                                                                                        \
        boost::operator<<(exception, std::move(tag));                                                        \
    }
