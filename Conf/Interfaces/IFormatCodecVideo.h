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

/// Key of the pixel format in a video codec's record: a `PixFmt` as a 64-bit integer. kept: unlike the other
/// keys it is not a member of the class.
extern ZELNOR_API const std::string TAG_PIX_FMT;

/// The geometry of a video stream.
struct FrameInfo
{
    std::uint32_t width;  ///< in pixels
    std::uint32_t height; ///< in pixels
    std::uint32_t ax;     ///< horizontal term of the sample aspect ratio (SAR), not reduced
    std::uint32_t ay;     ///< vertical term of the SAR
};

/// Writes, for example, "1920x1080 ax=1 ay=1". The stream's locale and format flags have no effect.
ZELNOR_API std::ostream& operator<<(std::ostream& os, const FrameInfo& info);

/// The descriptor of a video stream's codec: typed access to the geometry, frame rate and pixel format in its
/// record, which is named "format_codec_video".
///
/// Aspect ratios are pairs of terms. A pixel aspect is the sample aspect ratio (SAR) of the stream, a frame
/// aspect its display aspect ratio (DAR). All calculations use unsigned 32-bit arithmetic, which wraps. To
/// reduce a pair, both terms are divided by their greatest common divisor: a pair with one 0 becomes 0 : 1 or
/// 1 : 0, and 0 : 0 stays.
///
/// The getters of the geometry throw `Core::PropertyException` when the record lacks it.
class ZELNOR_API IFormatCodecVideo : public IFormatCodec
{
public:
    // TAG_WIDTH, TAG_FPS, TAG_X264_PRESET_FAST, ENCODER_CUDA_H264_IMPL, CODEC_ID_H264, ...
#define ZELNOR_TEXT(name, text) static const std::string name;
#define ZELNOR_SELF(name) static const std::string name;
#define ZELNOR_CODEC(name) static const std::string name;
#define ZELNOR_CODEC_AS(name, enumerator) static const std::string name;
#include "Conf/Interfaces/Vocabulary/IFormatCodecVideo.def"

    /// The largest reasonable bitrate of a video stream, in bits per second.
    static constexpr std::int64_t MAX_VIDEO_BITRATE = 500000000;

    /// Families of accelerated encoders and decoders.
    enum AcceleratorType : std::int32_t
    {
        ACCELERATOR_NVENC = 0, ///< NVIDIA's hardware encoder; it does not decode
        ACCELERATOR_CUDA = 1,  ///< CUDA
        ACCELERATOR_IM_HW = 2, ///< the "IM" hardware path
        ACCELERATOR_IM_SW = 3, ///< the "IM" software path
    };
    /// Copies as `IFormatCodec` does.
    IFormatCodecVideo(const IFormatCodecVideo& other);
    ~IFormatCodecVideo() override;
    /// A new descriptor; `Clone` makes a copy.
    static boost::intrusive_ptr<IFormatCodecVideo> Create();
    boost::intrusive_ptr<IFormatCodecVideo> Clone() const;

    int AddRef() const override;
    int GetRefCount() const override;
    int Release() const override;

    /// 0
    int GetCodecType() const override;
    boost::intrusive_ptr<IFormatCodec> CloneBase() const override;

    /// Stores the frame size and the SAR as given, without reducing it. If that fails, nothing is changed.
    void InitByPixelAspect(std::uint32_t width, std::uint32_t height, std::uint32_t pixelAspectX,
                           std::uint32_t pixelAspectY);
    /// Stores the frame size and the reduced SAR with which the frame has the given DAR.
    void InitByFrameAspect(std::uint32_t width, std::uint32_t height, std::uint32_t frameAspectX,
                           std::uint32_t frameAspectY);
    /// The reduced SAR with which a frame of that size has the given DAR.
    static void FrameToPixelAspect(std::uint32_t width, std::uint32_t height, std::uint32_t frameAspectX,
                                   std::uint32_t frameAspectY, std::uint32_t& pixelAspectX,
                                   std::uint32_t& pixelAspectY);
    /// The reduced DAR of a frame of that size with the given SAR.
    static void PixelToFrameAspect(std::uint32_t width, std::uint32_t height, std::uint32_t pixelAspectX,
                                   std::uint32_t pixelAspectY, std::uint32_t& frameAspectX,
                                   std::uint32_t& frameAspectY);

    /// The terms of the reduced DAR.
    std::uint32_t GetFrameAspectX() const;
    std::uint32_t GetFrameAspectY() const;
    /// The DAR as a number; infinite or not a number when the vertical term is 0.
    double GetFrameAspect() const;
    /// Frame size and SAR as stored.
    FrameInfo GetFrameInfo() const;

    /// Stores the frame rate, in frames per second and reduced.
    /// \throw boost::bad_rational "bad rational: zero denominator"; the record stays as it was
    void SetFrameRate(std::uint32_t num, std::uint32_t den);

    /// The pixel format stored under `TAG_PIX_FMT`; `PIX_FMT_NONE` if there is none.
    PixFmt GetPixelFormat() const;
    /// Stores the pixel format. Any value is accepted.
    void SetPixelFormat(PixFmt pixelFormat);

    /// The name of the accelerator's encoder or decoder for the codec `codecId`, a `CODEC_ID_` text.
    /// \throw std::out_of_range "key not found" when the accelerator does not have one
    static std::string GetAcceleratedEncoder(AcceleratorType accelerator, const std::string& codecId);
    static std::string GetAcceleratedDecoder(AcceleratorType accelerator, const std::string& codecId);
    /// All encoders or decoders of an accelerator, in the order of their codecs' texts.
    /// \throw std::out_of_range "key not found" when there is no such accelerator; `out` stays as it was
    static void GetAcceleratedEncoders(AcceleratorType accelerator, std::vector<std::string>& out);
    static void GetAcceleratedDecoders(AcceleratorType accelerator, std::vector<std::string>& out);
    /// The codecs that an accelerator encodes or decodes. `GetAcceleratedDecoderCodecs` leaves `out` as it
    /// was for ACCELERATOR_NVENC, which does not decode. \throw std::out_of_range "key not found" when there
    /// is no such accelerator; `out` stays as it was
    static void GetAcceleratedEncoderCodecs(AcceleratorType accelerator, std::vector<std::string>& out);
    static void GetAcceleratedDecoderCodecs(AcceleratorType accelerator, std::vector<std::string>& out);

protected:
    IFormatCodecVideo();

private:
    RefCountImpl m_videoReferences;
};

} // namespace Zelnor::Conf
