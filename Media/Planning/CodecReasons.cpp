#include "Media/Planning/CodecReasons.h"

#include "Media/FFmpeg/Calls.h"
#include "Media/Options/SettingRules.h"
#include "Media/Options/ValueNames.h"
#include "Media/Planning/CodecsInstead.h"
#include "Media/Planning/Containers.h"
#include "Media/Probe/FFmpegNames.h"
#include "Media/RecordText.h"

#include "Conf/Interfaces/IFormatCodec.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <vector>

namespace Zelnor::Media
{

namespace
{

using Conf::IFormatCodec;
using Core::Property;

constexpr const char* kBetween = "; ";

std::string WithAlternatives(const std::string& clause, const std::vector<std::string>& names)
{
    return names.empty() ? "" : kBetween + clause + " " + AlternativesText(names);
}

bool IsKnownCodec(const std::string& codec)
{
    const std::vector<std::string> names = NamesOfValues(IFormatCodec::TAG_CODEC_ID);
    return std::find(names.begin(), names.end(), codec) != names.end();
}

} // namespace

std::string CannotWriteText(const std::string& container)
{
    // FFmpeg would read the name up to a NUL.
    const bool isKnown = !HasNul(container) && FindMuxer(container) != nullptr;
    return !isKnown                ? "the installed FFmpeg cannot write the container '" + container + "'"
           : !IsOneFile(container) ? "the container '" + container + "' is not written as one file"
                                   : "";
}

std::string CannotHoldText(const std::string& container, const std::string& codec)
{
    return "the container " + container + " cannot hold " + codec +
           WithAlternatives("it holds", CodecsFor(container, codec)) +
           WithAlternatives(codec + " goes into", ContainersFor(codec));
}

std::string CannotHoldText(const std::string& container, AVCodecID codec)
{
    const std::optional<std::string> text = CodecTextOf(codec);
    return text ? CannotHoldText(container, *text)
                : "the container " + container + " cannot hold " + avcodec_get_name(codec);
}

std::string NoEncoderText(const std::string& container, const std::string& codec)
{
    return "the installed FFmpeg does not have an encoder for " + codec +
           WithAlternatives("for " + container + " it can encode", CodecsFor(container, codec));
}

std::string DisabledText(const std::string& codec, const std::string& encoder)
{
    return "encoding " + codec + " is disabled unless its encoder is named ('" + encoder + "', under " +
           IFormatCodec::TAG_PREFERREDIMPL + ")";
}

EncoderChoice ChooseEncoderFor(const Property& codec, const std::string& container)
{
    EncoderChoice choice = ChooseEncoder(codec);
    const std::string name = TextUnder(codec, IFormatCodec::TAG_CODEC_ID);
    if (choice.encoder != nullptr || !IsKnownCodec(name))
    {
        return choice;
    }
    const AVCodec* const usual = FindEncoder(name);
    choice.fault = usual == nullptr ? NoEncoderText(container, name)
                   : choice.key == IFormatCodec::TAG_CODEC_ID
                       ? DisabledText(name, usual->name)
                       : choice.fault + kBetween + "it has '" + usual->name + "'";
    return choice;
}

std::string AsSentences(const std::string& reason)
{
    const std::size_t end = reason.find(kBetween);
    std::string sentence = reason.substr(0, end) + ".";
    sentence.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(sentence.front())));
    return end == std::string::npos ? sentence : sentence + " " + AsSentences(reason.substr(end + 2));
}

} // namespace Zelnor::Media
