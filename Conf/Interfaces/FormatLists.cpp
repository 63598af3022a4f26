#include "Conf/Interfaces/FormatLists.h"

#include "Conf/Interfaces/IFormatFile.h"
#include "Conf/Private/Registry.h"
#include "Core/Interfaces/Exception.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <string_view>

namespace Zelnor::Conf
{

namespace
{

bool Contains(const std::vector<std::string>& list, const std::string& text)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

using Accelerator = IFormatCodecVideo::AcceleratorType;

/// Fills `out` with one column of the accelerator's rows. Returns whether there are any; if not, `out` stays
/// as it was.
template <std::size_t N>
bool ListAccelerated(const Accelerated (&table)[N], Accelerator accelerator,
                     std::string_view Accelerated::*column, std::vector<std::string>& out)
{
    const auto isRow = [&](const Accelerated& row) { return row.accelerator == accelerator; };
    const auto begin = std::find_if(std::begin(table), std::end(table), isRow);
    const auto end = std::find_if_not(begin, std::end(table), isRow);
    if (begin == end)
    {
        return false;
    }
    std::vector<std::string> list;
    list.reserve(static_cast<std::size_t>(end - begin));
    std::transform(begin, end, std::back_inserter(list),
                   [&](const Accelerated& row) { return std::string(row.*column); });
    out.swap(list);
    return true;
}

template <std::size_t N>
const std::string_view* FindAccelerated(const Accelerated (&table)[N], Accelerator accelerator,
                                        const std::string& codecId)
{
    const auto found = std::find_if(std::begin(table), std::end(table), [&](const Accelerated& row) {
        return row.accelerator == accelerator && row.codec == codecId;
    });
    return found == std::end(table) ? nullptr : &found->implementation;
}

std::out_of_range KeyNotFound() { return std::out_of_range("key not found"); }

} // namespace

const std::vector<std::string>& GetContainerList() { return g_containerList; }
const std::vector<std::string>& GetFormatList() { return g_formatList; }
const std::vector<std::string>& GetDisabledFormatParserList() { return g_fileFormatParserDisabled; }
const std::vector<std::string>& GetDisabledFormatMuxerList() { return g_fileFormatMuxerDisabled; }
const std::vector<std::string>& GetDisabledDecoderList() { return g_decodersDisabled; }
const std::vector<std::string>& GetDisabledEncoderList() { return g_encodersDisabled; }
const std::vector<std::string>& GetExternalDecoderList() { return g_codecExternal; }
const std::vector<std::string>& GetExternalEncoderList() { return g_codecExternal; } // kept: one for both
const std::vector<std::string>& GetMuxerImplList() { return g_muxerImplList; }
const std::vector<std::string>& GetParserImplList() { return g_parserImplList; }
const std::vector<std::string>& GetDecoderImplList() { return g_decoderImplList; }
const std::vector<std::string>& GetEncoderImplList() { return g_encoderImplList; }
const std::vector<std::string>& GetImageContainerList() { return g_imageFormatList; }
const std::vector<std::string>& GetAudioContainerList() { return g_audioFormatList; }

bool IsContainer(const std::string& format) { return Contains(g_containerList, format); }
bool IsExternalDecoder(const std::string& codecId) { return Contains(g_codecExternal, codecId); }
bool IsExternalEncoder(const std::string& codecId) { return Contains(g_codecExternal, codecId); }
bool IsImageContainer(const std::string& format) { return Contains(g_imageFormatList, format); }
bool IsAudioContainer(const std::string& format) { return Contains(g_audioFormatList, format); }

bool CanReadWithEncryption(const std::string& encryption)
{
    return encryption.empty() || encryption == IFormatFile::ENCRYPTION_DVD_CSS_PROTECTION;
}

bool CanCopyWithEncryption(const std::string& encryption) { return encryption.empty(); }

std::ostream& operator<<(std::ostream& os, const std::vector<std::string>& list)
{
    for (const std::string& text : list)
    {
        os << text << ", ";
    }
    return os;
}

// Accelerated encoders and decoders

void IFormatCodecVideo::GetAcceleratedEncoderCodecs(AcceleratorType accelerator,
                                                    std::vector<std::string>& out)
{
    if (!ListAccelerated(acceleratedEncoders, accelerator, &Accelerated::codec, out))
    {
        ZELNOR_THROW_WITHOUT_STACK(kStubUnit, KeyNotFound());
    }
}

void IFormatCodecVideo::GetAcceleratedDecoderCodecs(AcceleratorType accelerator,
                                                    std::vector<std::string>& out)
{
    if (accelerator == ACCELERATOR_NVENC)
    {
        return; // kept: an accelerator that does not decode is not an error here
    }
    if (!ListAccelerated(acceleratedDecoders, accelerator, &Accelerated::codec, out))
    {
        ZELNOR_THROW_WITHOUT_STACK(kStubUnit, KeyNotFound());
    }
}

std::string IFormatCodecVideo::GetAcceleratedEncoder(AcceleratorType accelerator, const std::string& codecId)
{
    const std::string_view* const encoder = FindAccelerated(acceleratedEncoders, accelerator, codecId);
    if (encoder == nullptr)
    {
        ZELNOR_THROW_WITHOUT_STACK(kStubUnit, KeyNotFound());
    }
    return std::string(*encoder);
}

std::string IFormatCodecVideo::GetAcceleratedDecoder(AcceleratorType accelerator, const std::string& codecId)
{
    const std::string_view* const decoder = FindAccelerated(acceleratedDecoders, accelerator, codecId);
    if (decoder == nullptr)
    {
        ZELNOR_THROW_WITHOUT_STACK(kStubUnit, KeyNotFound());
    }
    return std::string(*decoder);
}

void IFormatCodecVideo::GetAcceleratedEncoders(AcceleratorType accelerator, std::vector<std::string>& out)
{
    if (!ListAccelerated(acceleratedEncoders, accelerator, &Accelerated::implementation, out))
    {
        ZELNOR_THROW_WITHOUT_STACK(kStubUnit, KeyNotFound());
    }
}

void IFormatCodecVideo::GetAcceleratedDecoders(AcceleratorType accelerator, std::vector<std::string>& out)
{
    if (!ListAccelerated(acceleratedDecoders, accelerator, &Accelerated::implementation, out))
    {
        ZELNOR_THROW_WITHOUT_STACK(kStubUnit, KeyNotFound());
    }
}

} // namespace Zelnor::Conf
