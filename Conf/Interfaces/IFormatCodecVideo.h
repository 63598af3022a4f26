#pragma once

#include "Conf/Interfaces/IFormatCodec.h"
#include "Conf/Interfaces/PixelFormatDescription.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

/// \file
/// \code
/// const auto video = IFormatCodecVideo::Create();
/// video->InitByFrameAspect(720, 576, 16, 9);
/// video->SetFrameRate(25, 1);
/// video->SetPixelFormat(PIX_FMT_YUV420P);
/// assert(video->GetFrameInfo().ax == 64 && video->GetFrameInfo().ay == 45);
/// assert(video->GetProperty()["frameRateRatio"].GetRatio() == 25);
/// \endcode

namespace Zelnor::Conf
{

/// The geometry of a video stream.
struct FrameInfo
{
    std::uint32_t width;  ///< in pixels
    std::uint32_t height; ///< in pixels
    std::uint32_t ax;     ///< pixel aspect, horizontal term; not reduced
    std::uint32_t ay;     ///< pixel aspect, vertical term
};

/// Writes "1920x1080 ax=1 ay=1", whatever the stream's locale and format.
ZELNOR_API std::ostream& operator<<(std::ostream& os, const FrameInfo& info);

/// The descriptor of a video stream's codec: typed access to the geometry, frame rate and pixel format in its
/// record, which is named "format_codec_video".
///
/// The geometry is unsigned 32-bit arithmetic and wraps. Aspects are pairs of terms; reducing a pair divides
/// both by their greatest common divisor, so that a pair with one 0 becomes 0 : 1 or 1 : 0, and 0 : 0 stays.
///
/// \throw Core::PropertyException from the getters of the geometry when the record has none.
class ZELNOR_API IFormatCodecVideo : public IFormatCodec
{
public:
    // TAG_WIDTH, TAG_FPS, TAG_X264_PRESET_FAST, ENCODER_CUDA_H264_IMPL, CODEC_ID_H264, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#define ZELNOR_SELF(name) static const std::string name;
#define ZELNOR_CODEC(name) static const std::string name;
#define ZELNOR_CODEC_AS(name, enumerator) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"

    /// The most that the library proposes for a video stream, in bits per second.
    static constexpr std::int64_t MAX_VIDEO_BITRATE = 500000000;

    /// Families of accelerated encoders and decoders.
    enum AcceleratorType : std::int32_t
    {
        ACCELERATOR_NVENC = 0, ///< NVIDIA's hardware encoder; it decodes nothing
        ACCELERATOR_CUDA = 1,  ///< CUDA
        ACCELERATOR_IM_HW = 2, ///< the "IM" hardware path
        ACCELERATOR_IM_SW = 3, ///< the "IM" software path
    };

    IFormatCodecVideo(const IFormatCodecVideo& other);
    ~IFormatCodecVideo() override;

    static boost::intrusive_ptr<IFormatCodecVideo> Create();
    boost::intrusive_ptr<IFormatCodecVideo> Clone() const;

    int AddRef() const override;
    int GetRefCount() const override;
    int Release() const override;

    /// 0
    int GetCodecType() const override;
    boost::intrusive_ptr<IFormatCodec> CloneBase() const override;

    /// Stores size and pixel aspect as given, unreduced.
    void InitByPixelAspect(std::uint32_t width, std::uint32_t height, std::uint32_t pixelAspectX,
                           std::uint32_t pixelAspectY);
    /// Stores the size and the reduced pixel aspect that shows the frame at the given aspect.
    void InitByFrameAspect(std::uint32_t width, std::uint32_t height, std::uint32_t frameAspectX,
                           std::uint32_t frameAspectY);
    static void FrameToPixelAspect(std::uint32_t width, std::uint32_t height, std::uint32_t frameAspectX,
                                   std::uint32_t frameAspectY, std::uint32_t& pixelAspectX,
                                   std::uint32_t& pixelAspectY);
    static void PixelToFrameAspect(std::uint32_t width, std::uint32_t height, std::uint32_t pixelAspectX,
                                   std::uint32_t pixelAspectY, std::uint32_t& frameAspectX,
                                   std::uint32_t& frameAspectY);

    /// The terms of the reduced aspect at which the whole frame is shown.
    std::uint32_t GetFrameAspectX() const;
    std::uint32_t GetFrameAspectY() const;
    /// Their quotient; infinite or not a number when the vertical term is 0.
    double GetFrameAspect() const;
    FrameInfo GetFrameInfo() const;

    /// Stores the reduced rate, in frames per second.
    /// \throw boost::bad_rational "bad rational: zero denominator"; the record stays as it was
    void SetFrameRate(std::uint32_t num, std::uint32_t den);

    /// PIX_FMT_NONE when none is set.
    PixFmt GetPixelFormat() const;
    /// Any value is accepted.
    void SetPixelFormat(PixFmt pixelFormat);

    /// The name of the encoder or decoder for a codec; codecs are named by their `CODEC_ID_` texts.
    /// \throw std::out_of_range "key not found" when the accelerator has none
    static std::string GetAcceleratedEncoder(AcceleratorType accelerator, const std::string& codecId);
    static std::string GetAcceleratedDecoder(AcceleratorType accelerator, const std::string& codecId);
    /// All encoders or decoders of an accelerator, in the order of their codecs' texts.
    /// \throw std::out_of_range "key not found" when there is no such accelerator; `out` stays as it was
    static void GetAcceleratedEncoders(AcceleratorType accelerator, std::vector<std::string>& out);
    static void GetAcceleratedDecoders(AcceleratorType accelerator, std::vector<std::string>& out);
    /// The codecs that an accelerator encodes or decodes. For ACCELERATOR_NVENC, which decodes nothing,
    /// `GetAcceleratedDecoderCodecs` leaves `out` as it was.
    /// \throw std::out_of_range "key not found" when there is no such accelerator; `out` stays as it was
    static void GetAcceleratedEncoderCodecs(AcceleratorType accelerator, std::vector<std::string>& out);
    static void GetAcceleratedDecoderCodecs(AcceleratorType accelerator, std::vector<std::string>& out);

protected:
    IFormatCodecVideo();

private:
    RefCountImpl m_videoReferences;
};

} // namespace Zelnor::Conf
