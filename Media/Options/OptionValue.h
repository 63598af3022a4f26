#pragma once

// Private to the library, not installed.

#include "Media/Options/OptionRules.h"
#include "Media/Options/OptionTables.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <string>

namespace Zelnor::Media
{

/// One of FFmpeg's options, and the codec's class that names its values.
struct FoundOption
{
    const AVClass* owner = nullptr; ///< of the option
    const AVClass* codec = nullptr; ///< of the codec's own options; may be null
    const AVOption* option = nullptr;
};

/// The value as FFmpeg is given it when it is a number, names or flags as the option has them.
CheckedOption CheckOptionValue(const FoundOption& found, const Core::Property& value);

/// The same for an option whose value is a text.
CheckedOption CheckText(const TextRule& rule, const Core::Property& value);

/// The same for parameters of the encoder's library, which are written anew: "keyint=50:ref=4".
CheckedOption CheckParameters(const ParametersRule& rule, const Core::Property& value);

} // namespace Zelnor::Media
