#pragma once

#include "Core/Interfaces/Export.h"

#include <ostream>
#include <string>
#include <vector>

/// \file
/// The registry's lists of containers and implementations, and what can be done with encrypted files. All
/// lists are constant, in a fixed order, some with doubled entries, and live as long as the library.

namespace Zelnor::Conf
{

/// The containers that can be written, as `IFormatFile::FORMAT_` texts; "adts" stands twice.
ZELNOR_API const std::vector<std::string>& GetFormatList();
/// Containers that the built-in parser or muxer must not be used for.
ZELNOR_API const std::vector<std::string>& GetDisabledFormatParserList();
ZELNOR_API const std::vector<std::string>& GetDisabledFormatMuxerList();
/// Codecs, as `CODEC_ID_` texts, that must not be decoded or encoded.
ZELNOR_API const std::vector<std::string>& GetDisabledDecoderList();
ZELNOR_API const std::vector<std::string>& GetDisabledEncoderList();
/// Codecs whose implementation is not FFmpeg's. One list serves both.
ZELNOR_API const std::vector<std::string>& GetExternalDecoderList();
ZELNOR_API const std::vector<std::string>& GetExternalEncoderList();
/// Names of implementations.
ZELNOR_API const std::vector<std::string>& GetMuxerImplList();
ZELNOR_API const std::vector<std::string>& GetParserImplList();
ZELNOR_API const std::vector<std::string>& GetDecoderImplList();
ZELNOR_API const std::vector<std::string>& GetEncoderImplList();
/// Containers of images and of sound, as `IFormatFile::FORMAT_` texts.
ZELNOR_API const std::vector<std::string>& GetImageContainerList();
ZELNOR_API const std::vector<std::string>& GetAudioContainerList();

/// Whether the codec or container is in the list; case-sensitive.
ZELNOR_API bool IsExternalDecoder(const std::string& codecId);
ZELNOR_API bool IsExternalEncoder(const std::string& codecId);
ZELNOR_API bool IsImageContainer(const std::string& format);
ZELNOR_API bool IsAudioContainer(const std::string& format);

/// Whether a file with this encryption (an `IFormatFile::ENCRYPTION_` text, "" for none) can be read.
ZELNOR_API bool CanReadWithEncryption(const std::string& encryption);
/// Whether streams may be copied unchanged out of a file with this encryption.
ZELNOR_API bool CanCopyWithEncryption(const std::string& encryption);

/// Writes ", " after every element, the last one too. Outside this namespace, say
/// `using Zelnor::Conf::operator<<`.
ZELNOR_API std::ostream& operator<<(std::ostream& os, const std::vector<std::string>& list);

} // namespace Zelnor::Conf
