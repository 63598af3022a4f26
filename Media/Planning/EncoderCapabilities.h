#pragma once

// Private to the library, not installed.

#include "Media/Probe/FFmpegNames.h"

namespace Zelnor::Media
{

/// \file
/// What an encoder supports, and what of it is nearest to something wanted. An encoder that lists nothing
/// supports everything.

bool Supports(const AVCodec& encoder, PixFmt format);
bool Supports(const AVCodec& encoder, AVPixelFormat format);
bool Supports(const AVCodec& encoder, Conf::SampleFormats format);
bool Supports(const AVCodec& encoder, Conf::ChannelLayout layout);
bool SupportsSampleRate(const AVCodec& encoder, int sampleRate);

/// Of the vocabulary's formats that the encoder supports, the one that loses the least of `wanted`.
/// PIX_FMT_NONE when the encoder supports none of them.
PixFmt NearestPixelFormat(const AVCodec& encoder, PixFmt wanted);
/// Of all formats in memory that the encoder supports, the one that loses the least of `wanted`: bits, alpha,
/// chroma. AV_PIX_FMT_NONE when there is none.
AVPixelFormat NearestPixelFormat(const AVCodec& encoder, AVPixelFormat wanted);
/// The same samples in the other arrangement are nearer than other samples.
Conf::SampleFormats NearestSampleFormat(const AVCodec& encoder, Conf::SampleFormats wanted);
/// The integer samples of the most bits, for floating-point samples of a lossless source that the encoder
/// does not support: fewer bits would be heard, more are not there.
Conf::SampleFormats FinestSampleFormat(const AVCodec& encoder, Conf::SampleFormats wanted);
/// The same number of channels, else fewer.
Conf::ChannelLayout NearestLayout(const AVCodec& encoder, Conf::ChannelLayout wanted);
/// The next higher rate, else the highest.
int NearestRate(const AVCodec& encoder, int wanted);
AVRational NearestFrameRate(const AVCodec& encoder, AVRational wanted);

/// Whether the codec has no bitrate to be set: it is lossless, or codes images without one.
bool IsWithoutBitrate(AVCodecID codec);
/// Whether the encoder can use the statistics of a first pass.
bool HasTwoPasses(const AVCodec& encoder);

} // namespace Zelnor::Media
