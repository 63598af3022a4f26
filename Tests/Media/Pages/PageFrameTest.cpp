#include "Media/Pages/PageFrame.h"

#include "Tests/Support/Html.h"

extern "C" {
#include <libavutil/base64.h>
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

#include <array>
#include <memory>

namespace Zelnor::Media
{
namespace
{

constexpr const PageAsset* kAssets[] = {&kPageStyle, &kDrawingScript, &kTableScript};

/// As a policy names what it allows: "sha256-...".
std::string HashOf(const std::string& text)
{
    const std::unique_ptr<AVSHA, decltype(&av_free)> sha(av_sha_alloc(), av_free);
    av_sha_init(sha.get(), 256);
    av_sha_update(sha.get(), reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    std::array<std::uint8_t, 32> digest = {};
    av_sha_final(sha.get(), digest.data());
    std::array<char, AV_BASE64_SIZE(32)> encoded = {};
    av_base64_encode(encoded.data(), encoded.size(), digest.data(), static_cast<int>(digest.size()));
    return std::string("sha256-") + encoded.data();
}

TEST(PageFrame, AllowsExactlyItsOwnStyleSheetAndScript)
{
    for (const PageAsset* const asset : kAssets)
    {
        EXPECT_EQ(asset->hash, HashOf(asset->text));
    }
    for (const PageAsset* const script : {&kDrawingScript, &kTableScript})
    {
        const std::string html = MakePage({"a", "", script});
        EXPECT_EQ(Testing::AllMatches(html, "Security-Policy\" content=\"([^\"]*)\""),
                  std::vector<std::string>{"default-src 'none'; style-src '" + std::string(kPageStyle.hash) +
                                           "'; script-src '" + script->hash +
                                           "'; base-uri 'none'; form-action 'none'"});
        EXPECT_NE(html.find(script->text), std::string::npos);
    }
}

TEST(PageFrame, NamesThePolicyBeforeAnythingThatItIsAbout)
{
    const std::string html = MakePage({"<b>", "<p>text</p>\n"});
    EXPECT_LT(html.find("Content-Security-Policy"), html.find("<title>"));
    EXPECT_LT(html.find("Content-Security-Policy"), html.find("<style>"));
}

TEST(PageFrame, ReadsTheSameAsHtmlAndAsXml)
{
    const std::string html = MakePage({"</title><script>alert(1)</script>", "<p>text</p>\n"});
    Testing::ExpectGoodPage(html);
    EXPECT_NE(html.find("<title>&lt;/title&gt;&lt;script&gt;alert(1)&lt;/script&gt;</title>"),
              std::string::npos);
    for (const PageAsset* const asset : kAssets)
    {
        const std::string text = asset->text;
        EXPECT_EQ(text.find_first_of("<&"), std::string::npos);
        EXPECT_EQ(text.find("]]>"), std::string::npos);
    }
}

TEST(PageFrame, NamesNoOtherPlace)
{
    for (const PageAsset* const asset : kAssets)
    {
        const std::string text = asset->text;
        EXPECT_EQ(text.find("//"), std::string::npos);
        EXPECT_EQ(text.find("url("), std::string::npos);
        EXPECT_EQ(text.find("@import"), std::string::npos);
    }
}

} // namespace
} // namespace Zelnor::Media
