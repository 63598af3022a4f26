#include "Tests/Support/PictureTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace Zelnor;
using namespace Zelnor::Media;
using namespace Zelnor::Testing;
using testing::ElementsAre;
using testing::IsEmpty;

/// A clip whose left half is transparent.
class Transparency : public PictureTest
{
protected:
    Transparency()
    {
        Make("color=red:s=64x48:d=0.2:r=10,format=rgba,geq=r=255:g=0:b=0:a='if(lt(X,32),0,255)'",
             {"-c:v", "png", "in.mov"});
        Make("color=red:s=64x48:d=0.2:r=10,format=rgba,geq=r=255:g=0:b=0:a='if(lt(X,32),0,255)',split[a][b];"
             "[a]palettegen[p];[b][p]paletteuse",
             {"in.gif"});
    }
    /// The transparency of the left and the right half, decoded by an encoder's own library.
    std::vector<int> Alpha(const std::string& decoder) const
    {
        const ProcessResult result =
            RunProcess({"ffmpeg", "-nostdin", "-v", "error", "-c:v", decoder, "-i", Name("out.webm"),
                        "-frames:v", "1", "-pix_fmt", "rgba", "-f", "rawvideo", "pipe:1"});
        const auto at = [&result](std::size_t x) {
            return static_cast<int>(static_cast<unsigned char>(result.output.at((24 * 64 + x) * 4 + 3)));
        };
        return {at(8), at(56)};
    }
};

TEST_F(Transparency, IsKeptByVp8AndVp9)
{
    for (const auto& [codec, decoder] :
         {std::pair("CODEC_ID_VP8", "libvpx"), std::pair("CODEC_ID_VP9", "libvpx-vp9")})
    {
        for (const std::string source : {"in.gif", "in.mov"})
        {
            SCOPED_TRACE(codec + source);
            Convert(source, "webm", std::string(R"({"video":{"codec_id":")") + codec + R"("}})");
            const std::vector<int> alpha = Alpha(decoder);
            EXPECT_LT(alpha.at(0), 16);
            EXPECT_GT(alpha.at(1), 240);
        }
    }
}

TEST_F(Transparency, OfVp8IsNamedWhereTheContainerHasNoPlaceForIt)
{
    const PlannedJob job = Convert("in.mov", "avi", R"({"video":{"codec_id":"CODEC_ID_VP8"}})");
    EXPECT_THAT(job.notes,
                ElementsAre(Loss("in.mov", "its RGB samples become 4:2:0, whose chroma is coarser"),
                            Loss("in.mov", "its transparency is left out")));
    EXPECT_EQ(Video().pixelFormat, "yuv420p");
}

} // namespace
