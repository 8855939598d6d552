#include "formats/webp/webp_loader.h"
#include "tests/formats/format_files.h"

namespace {

using webp::WebpLoader;

// A frame of one pixel at x. Each of its colours has a code of one symbol: 3 bits that say so, and
// the symbol.
std::string frame(uint64_t x, uint64_t red, uint64_t blue) {
    const uint64_t codes = uint64_t{5} << 3 | (5 | red << 3) << 14 | (5 | blue << 3) << 25 |
                           uint64_t{5 | 255 << 3} << 36 | uint64_t{1} << 47;
    return "ANMF" + little(36, 4) + little(x / 2, 3) + little(0, 9) + little(100, 4) + "VP8L" +
           little(12, 4) + "\x2F" + little(1 << 28, 4) + little(codes, 7);
}

TEST(Webp, OpensTheWantedFrame) {
    const ScratchDirectory files;
    const std::string path = files.write(
        "a.webp", "RIFF" + little(124, 4) + "WEBPVP8X" + little(10, 4) + little(0x12, 4) +
                      little(2, 3) + little(0, 3) + "ANIM" + little(6, 4) + little(0, 6) +
                      frame(0, 255, 0) + frame(2, 0, 255));
    const LoadedImage second = load<WebpLoader>(path, {.page = 2});
    EXPECT_EQ(second.samples, (Bytes{255, 0, 0, 255, 0, 0, 0, 0, 0, 0, 255, 255}));
    EXPECT_EQ(tagsOf(second.image)[ITAG_PageCount], 2u);
    EXPECT_EQ(failureOf([&] { load<WebpLoader>(path, {.page = 3}); }), formats::kNoSuchPage);
}

}  // namespace
