#pragma once

#include "Core/Interfaces/Export.h"

#include <ostream>
#include <string>
#include <vector>

/// \file
/// Lists of containers and implementations, and what can be done with encrypted files. All lists are
/// constant, have a fixed order and live as long as the library. Some contain an entry twice.

namespace Zelnor::Conf
{

/// All containers that the vocabulary names: every `IFormatFile::FORMAT_` text, each once.
ZELNOR_API const std::vector<std::string>& GetContainerList();
/// The containers that can be written, as `IFormatFile::FORMAT_` texts. "adts" occurs twice.
ZELNOR_API const std::vector<std::string>& GetFormatList();
/// Containers for which the built-in parser or muxer must not be used.
ZELNOR_API const std::vector<std::string>& GetDisabledFormatParserList();
ZELNOR_API const std::vector<std::string>& GetDisabledFormatMuxerList();
/// Codecs, as `CODEC_ID_` texts, that must not be decoded or encoded.
ZELNOR_API const std::vector<std::string>& GetDisabledDecoderList();
ZELNOR_API const std::vector<std::string>& GetDisabledEncoderList();
/// Codecs that FFmpeg does not implement. Both functions return the same list.
ZELNOR_API const std::vector<std::string>& GetExternalDecoderList();
ZELNOR_API const std::vector<std::string>& GetExternalEncoderList();
/// Names of implementations: `MUXER_`, `PARSER_`, `DECODER_` and `ENCODER_` texts.
ZELNOR_API const std::vector<std::string>& GetMuxerImplList();
ZELNOR_API const std::vector<std::string>& GetParserImplList();
ZELNOR_API const std::vector<std::string>& GetDecoderImplList();
ZELNOR_API const std::vector<std::string>& GetEncoderImplList();
/// Containers of images and of audio, as `IFormatFile::FORMAT_` texts.
ZELNOR_API const std::vector<std::string>& GetImageContainerList();
ZELNOR_API const std::vector<std::string>& GetAudioContainerList();

/// Whether the vocabulary names the container, so that a record may name it too. Not every container can be
/// written. Names are case-sensitive.
ZELNOR_API bool IsContainer(const std::string& format);
/// Whether the codec or container is in the list. Names are case-sensitive.
ZELNOR_API bool IsExternalDecoder(const std::string& codecId);
ZELNOR_API bool IsExternalEncoder(const std::string& codecId);
ZELNOR_API bool IsImageContainer(const std::string& format);
ZELNOR_API bool IsAudioContainer(const std::string& format);

/// Whether a file with this encryption (an `IFormatFile::ENCRYPTION_` text, "" for none) can be read.
ZELNOR_API bool CanReadWithEncryption(const std::string& encryption);
/// Whether streams may be copied from a file with this encryption without being transcoded.
ZELNOR_API bool CanCopyWithEncryption(const std::string& encryption);

/// Writes the elements, each followed by ", ", including the last one. To use it outside this namespace,
/// declare `using Zelnor::Conf::operator<<`.
ZELNOR_API std::ostream& operator<<(std::ostream& os, const std::vector<std::string>& list);

} // namespace Zelnor::Conf
