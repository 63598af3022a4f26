#include "Media/Verifying/SourceTruncation.h"

#include "Media/FFmpeg/Calls.h"

extern "C" {
#include <libavutil/crc.h>
}

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace Zelnor::Media
{

namespace
{

using namespace std::string_view_literals;

/// The bytes of a regular file.
class FileBytes
{
public:
    explicit FileBytes(const std::string& name)
    {
        std::error_code error;
        const std::uintmax_t size =
            std::filesystem::is_regular_file(name, error) ? std::filesystem::file_size(name, error) : 0;
        m_size = error ? 0 : size;
        if (m_size > 0)
        {
            m_file.open(name, std::ios::binary);
        }
    }

    std::uint64_t Size() const { return m_size; }

    /// Fewer where the file ends.
    std::string Read(std::uint64_t position, std::size_t count)
    {
        std::string bytes(position < m_size ? std::min<std::uint64_t>(count, m_size - position) : 0, '\0');
        m_file.clear();
        m_file.seekg(static_cast<std::streamoff>(position));
        m_file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        bytes.resize(static_cast<std::size_t>(std::max<std::streamsize>(m_file.gcount(), 0)));
        return bytes;
    }

private:
    std::ifstream m_file;
    std::uint64_t m_size = 0;
};

enum class Order
{
    Little,
    Big,
};

/// The number in these bytes of the text; 0 when it is shorter.
std::uint64_t NumberAt(std::string_view bytes, std::size_t position, std::size_t count, Order order)
{
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < count && position + count <= bytes.size(); ++i)
    {
        const std::size_t place = order == Order::Big ? i : count - 1 - i;
        number = number << 8U | static_cast<unsigned char>(bytes[position + place]);
    }
    return number;
}

/// How a format stores its chunks: a name, a length and as many bytes.
struct ChunkFormat
{
    std::size_t start;     ///< of the first chunk
    std::string_view data; ///< name of the chunk that holds the media
    std::size_t nameSize;
    std::size_t lengthSize;
    Order order;
    bool countsHeader;   ///< whether a length counts the name and the length, too
    std::uint64_t align; ///< a chunk begins at a multiple of it
    /// Who writes to a pipe, and cannot go back, gives a length of this or more, or none.
    std::uint64_t unknown;
};

constexpr std::uint64_t kUnknown32 = 0x7FFF0000;
constexpr std::uint64_t kUnknown64 = std::uint64_t{1} << 62U;

constexpr ChunkFormat kWav = {12, "data"sv, 4, 4, Order::Little, false, 2, kUnknown32};
constexpr ChunkFormat kCaf = {8, "data"sv, 4, 8, Order::Big, false, 1, kUnknown64};
constexpr ChunkFormat kW64 = {
    40, "data\xF3\xAC\xD3\x11\x8C\xD1\x00\xC0\x4F\x8E\xDB\x8A"sv, 16, 8, Order::Little, true, 8, kUnknown64};

/// Where the chunk with the media ends; nothing when that is not known.
std::optional<std::uint64_t> EndOfData(FileBytes& file, const ChunkFormat& format)
{
    constexpr int kMostChunks = 1000;
    const std::size_t header = format.nameSize + format.lengthSize;
    std::uint64_t position = format.start;
    for (int i = 0; i < kMostChunks; ++i)
    {
        const std::string chunk = file.Read(position, header);
        const std::uint64_t length = NumberAt(chunk, format.nameSize, format.lengthSize, format.order);
        if (chunk.size() < header || length == 0 || length >= format.unknown)
        {
            return std::nullopt;
        }
        const std::uint64_t end = position + length + (format.countsHeader ? 0 : header);
        if (chunk.compare(0, format.nameSize, format.data) == 0)
        {
            return end;
        }
        position = (end + format.align - 1) / format.align * format.align;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> EndOfWav(FileBytes& file)
{
    // RF64 has its length elsewhere, where FFmpeg reads it.
    return file.Read(0, 4) == "RIFF" ? EndOfData(file, kWav) : std::nullopt;
}
std::optional<std::uint64_t> EndOfCaf(FileBytes& file) { return EndOfData(file, kCaf); }
std::optional<std::uint64_t> EndOfW64(FileBytes& file) { return EndOfData(file, kW64); }

/// Large files have several parts.
std::optional<std::uint64_t> EndOfAvi(FileBytes& file)
{
    constexpr std::size_t kHeader = 8;
    std::uint64_t position = 0;
    std::string part = file.Read(position, kHeader);
    while (part.size() == kHeader && part.compare(0, 4, "RIFF") == 0)
    {
        const std::uint64_t length = NumberAt(part, 4, 4, Order::Little);
        if (length == 0 || length >= kUnknown32)
        {
            return std::nullopt;
        }
        position += kHeader + length + length % 2;
        part = file.Read(position, kHeader);
    }
    return position;
}

/// The header tells where the data begin, and they tell how long they are.
std::optional<std::uint64_t> EndOfAsf(FileBytes& file)
{
    constexpr std::string_view kData = "\x36\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;
    constexpr std::size_t kIdentifier = 16;
    constexpr std::size_t kHeader = 24;
    const std::uint64_t position = NumberAt(file.Read(0, kHeader), kIdentifier, 8, Order::Little);
    const std::string data = file.Read(position, kHeader);
    const std::uint64_t length = NumberAt(data, kIdentifier, 8, Order::Little);
    return data.compare(0, kIdentifier, kData) == 0 && length < kUnknown64 ? std::optional(position + length)
                                                                           : std::nullopt;
}

bool IsStartCode(std::string_view bytes)
{
    constexpr unsigned char kFirst = 0xB9;
    return bytes.size() >= 4 && bytes.substr(0, 3) == "\0\0\1"sv &&
           static_cast<unsigned char>(bytes[3]) >= kFirst;
}

/// The size of what begins there in a program stream; 0 when it is not told.
std::size_t PacketSize(std::string_view bytes)
{
    constexpr std::size_t kMpeg1Pack = 12;
    constexpr std::size_t kMpeg2Pack = 14;
    switch (static_cast<unsigned char>(bytes[3]))
    {
    case 0xB9: // the end of the program
        return 4;
    case 0xBA: // a pack
        return bytes.size() < kMpeg2Pack ? 0
               : (static_cast<unsigned char>(bytes[4]) >> 6U) == 1U
                   ? kMpeg2Pack + (static_cast<unsigned char>(bytes[13]) & 7U)
                   : kMpeg1Pack;
    default:
        return bytes.size() < 6 ? 0 : 6 + static_cast<std::size_t>(NumberAt(bytes, 4, 2, Order::Big));
    }
}

/// Follows the packets from a pack near the end.
std::optional<std::uint64_t> EndOfProgramStream(FileBytes& file)
{
    constexpr std::uint64_t kWindow = 256 * 1024;
    const std::uint64_t begin = file.Size() - std::min(file.Size(), kWindow);
    const std::string bytes = file.Read(begin, kWindow);
    const std::string_view view = bytes;
    for (std::size_t pack = 0; (pack = view.find("\0\0\1\xBA"sv, pack)) != std::string_view::npos; ++pack)
    {
        std::size_t position = pack;
        std::size_t size = 0;
        while (position < view.size() && IsStartCode(view.substr(position)) &&
               (size = PacketSize(view.substr(position))) != 0)
        {
            position += size;
        }
        if (position >= view.size())
        {
            return begin + position;
        }
    }
    return std::nullopt;
}

/// What begins there in an Ogg file.
enum class OggPage
{
    None,   ///< its checksum is wrong: something within a page that looks like one
    Cut,    ///< the file ends before it
    Middle, ///< more of its stream comes after it
    Last,   ///< its stream ends with it
};

OggPage OggPageOf(std::string page)
{
    constexpr std::size_t kHeader = 27;
    constexpr std::size_t kFlags = 5;
    constexpr std::size_t kChecksum = 22;
    const std::size_t segments = page.size() < kHeader ? 0 : static_cast<unsigned char>(page[kHeader - 1]);
    std::size_t size = kHeader + segments;
    for (std::size_t i = kHeader; i < kHeader + segments && i < page.size(); ++i)
    {
        size += static_cast<unsigned char>(page[i]);
    }
    if (page.size() < size)
    {
        return OggPage::Cut;
    }
    const std::uint64_t checksum = NumberAt(page, kChecksum, 4, Order::Big);
    page.replace(kChecksum, 4, 4, '\0');
    if (checksum !=
        av_crc(av_crc_get_table(AV_CRC_32_IEEE), 0, reinterpret_cast<const std::uint8_t*>(page.data()), size))
    {
        return OggPage::None;
    }
    constexpr unsigned int kEndOfStream = 4;
    return (static_cast<unsigned int>(page[kFlags]) & kEndOfStream) == 0 ? OggPage::Middle : OggPage::Last;
}

/// The last page of an Ogg file ends its stream.
std::optional<Truncation> FindOggTruncation(FileBytes& file)
{
    constexpr std::size_t kLongestPage = 65307;
    constexpr std::size_t kWindow = 2 * kLongestPage;
    const std::string bytes = file.Read(file.Size() - std::min<std::uint64_t>(file.Size(), kWindow), kWindow);
    OggPage last = OggPage::None;
    for (std::size_t place = bytes.rfind("OggS"sv); place != std::string::npos && last == OggPage::None;
         place = place == 0 ? std::string::npos : bytes.rfind("OggS"sv, place - 1))
    {
        last = OggPageOf(bytes.substr(place, kLongestPage));
    }
    return last == OggPage::Last ? std::nullopt : std::optional(Truncation{"an end-of-stream page", "none"});
}

/// A transport stream that was cut between two packets looks like one that was recorded until then.
std::optional<Truncation> FindTransportTruncation(FileBytes& file)
{
    struct Packet
    {
        std::uint64_t size;
        std::uint64_t sync; ///< place of the byte with which it begins
    };
    constexpr std::array<Packet, 3> kPackets = {{{188, 0}, {192, 4}, {204, 0}}};
    constexpr std::uint64_t kLooked = 5;
    for (const Packet& packet : kPackets)
    {
        const std::uint64_t count = file.Size() / packet.size;
        const std::uint64_t rest = file.Size() % packet.size;
        const auto isPacket = [&](std::uint64_t index) {
            return file.Read(index * packet.size + packet.sync, 1) == "\x47";
        };
        bool areAligned = count >= kLooked;
        for (std::uint64_t i = 0; i < kLooked && areAligned; ++i)
        {
            areAligned = isPacket(i) && isPacket(count - 1 - i);
        }
        if (areAligned)
        {
            return rest != 0 && (rest <= packet.sync || isPacket(count))
                       ? std::optional(Truncation{"packets of " + std::to_string(packet.size) + " bytes",
                                                  "one of " + std::to_string(rest) + " bytes"})
                       : std::nullopt;
        }
    }
    return std::nullopt;
}

/// Where a format says that its files end.
struct EndOfFormat
{
    std::string_view demuxer;
    std::optional<std::uint64_t> (*find)(FileBytes&);
    std::uint64_t tolerance; ///< bytes; some programs count a header twice
};
constexpr std::array<EndOfFormat, 6> kEnds = {{
    {"wav", &EndOfWav, 1024},
    {"w64", &EndOfW64, 1024},
    {"caf", &EndOfCaf, 1024},
    {"avi", &EndOfAvi, 1024},
    {"asf", &EndOfAsf, 0},
    {"mpeg", &EndOfProgramStream, 0},
}};

} // namespace

std::optional<Truncation> FindTruncation(const MediaFile& file)
{
    FileBytes bytes(file.name);
    if (bytes.Size() == 0)
    {
        return std::nullopt;
    }
    if (file.demuxer == "ogg")
    {
        return FindOggTruncation(bytes);
    }
    if (file.demuxer == "mpegts")
    {
        return FindTransportTruncation(bytes);
    }
    const auto* const row = std::find_if(kEnds.begin(), kEnds.end(), [&file](const EndOfFormat& known) {
        return known.demuxer == file.demuxer;
    });
    const auto end = row == kEnds.end() ? std::nullopt : row->find(bytes);
    return end && *end > bytes.Size() + row->tolerance
               ? std::optional(
                     Truncation{std::to_string(*end) + " bytes", std::to_string(bytes.Size()) + " bytes"})
               : std::nullopt;
}

} // namespace Zelnor::Media
