// Files that were made by other programs, from Debian's packages of test pictures, read by a host
// and compared with what their makers say is in them. Where the packages are not installed, there
// is nothing to compare.
#include <vorn/host.h>

#include <map>
#include <memory>
#include <sstream>

#include "formats/common/layout.h"
#include "tests/formats/format_files.h"

namespace {

namespace fs = std::filesystem;

const fs::path kGoImages = "/usr/share/gocode/src/golang.org/x/image/testdata";
const fs::path kPixbufImages = "/usr/libexec/installed-tests/gdk-pixbuf/test-images";

struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> samples;  // red, green, blue, alpha
    int32_t error = 0;
    int32_t pages = 0;

    uint8_t* pixel(size_t i) { return &samples[4 * i]; }
};

int32_t numberOf(VORN_Image* image, uint32_t id) {
    int32_t value = 0;
    VORN_H_ImageVaGetTags(image, id, &value, TAG_End);
    return value;
}

// The loader is the one that the file's content calls for.
Picture read(const fs::path& path, VORN_Word page = 1) {
    Picture picture;
    char loader[256] = "";
    const std::unique_ptr<VORN_Image, void (*)(VORN_Image*)> image(
        VORN_H_ImageGetLoaderName(path.c_str(), nullptr, loader, sizeof loader)
            ? VORN_H_ModuleVaOpen(loader, VORN_LOADER, TAG_End)
            : nullptr,
        VORN_H_ModuleClose);
    const auto failed = [&] {
        picture.error = VORN_ErrorPairCode(VORN_H_ImageGetError(image.get()));
        return picture;
    };
    if (!image || !VORN_H_ImageVaOpen(image.get(), ITAG_Filename, path.c_str(), ITAG_PageNumber,
                                      page, TAG_End))
        return failed();
    VORN_H_ImageVaSetTags(image.get(), ITAG_ColorSpace, VORN_Word{VORN_CS_RGB}, ITAG_Orientation,
                          VORN_Word{0}, TAG_End);
    picture.width = numberOf(image.get(), ITAG_Width);
    picture.height = numberOf(image.get(), ITAG_Height);
    picture.pages = numberOf(image.get(), ITAG_PageCount);
    picture.samples.assign(
        static_cast<size_t>(picture.width) * static_cast<size_t>(picture.height) * 4, 255);
    VORN_ImageBuffer buffer{};
    buffer.type = VORN_BUFFER_CHUNKY;
    buffer.chunky =
        formats::interleavedBuffer(picture.samples.data(), picture.width, picture.height, 4, 1);
    if (!numberOf(image.get(), ITAG_Alpha)) buffer.chunky.channelPlace[3] = nullptr;
    if (!VORN_H_ImageVaReadData(image.get(), &buffer, TAG_End)) return failed();
    return picture;
}

// 256 when the sizes differ. The colour of what can't be seen doesn't count.
int furthest(Picture a, Picture b) {
    if (a.width != b.width || a.height != b.height || a.error || b.error) return 256;
    int most = 0;
    for (size_t i = 0; i < a.samples.size() / 4; ++i) {
        if (a.pixel(i)[3] == 0 && b.pixel(i)[3] == 0) continue;
        for (size_t c = 0; c < 4; ++c)
            most = std::max(most, std::abs(a.pixel(i)[c] - b.pixel(i)[c]));
    }
    return most;
}

class RealFiles : public testing::Test {
  protected:
    ScopedVariable home_{"VORN", VORN_BUILT_HOME};
};

TEST_F(RealFiles, TiffBmpAndWebpAreTheirPngs) {
    if (!fs::exists(kGoImages)) GTEST_SKIP() << "golang-golang-x-image-dev is not installed";
    const std::pair<const char*, const char*> pairs[] = {
        {"blue-purple-pink.lzwcompressed.tiff", "blue-purple-pink.png"},
        {"bw-deflate.tiff", "bw-gopher.png"},
        {"bw-gopher_ccittGroup3.tiff", "bw-gopher.png"},
        {"bw-gopher_ccittGroup4.tiff", "bw-gopher.png"},
        {"bw-packbits.tiff", "bw-gopher.png"},
        {"bw-uncompressed.tiff", "bw-gopher.png"},
        {"video-001-16bit.tiff", "video-001.png"},
        {"video-001-strip-64.tiff", "video-001.png"},
        {"video-001-tile-64x64.tiff", "video-001.png"},
        {"video-001-uncompressed.tiff", "video-001.png"},
        {"video-001.tiff", "video-001.png"},
        {"colormap.bmp", "colormap.png"},
        {"video-001.bmp", "video-001.png"},
        {"yellow_rose-small.bmp", "yellow_rose-small.png"},
        {"yellow_rose-small-v5.bmp", "yellow_rose-small-v5.png"},
        {"blue-purple-pink-large.lossless.webp", "blue-purple-pink-large.png"},
        {"blue-purple-pink.lossless.webp", "blue-purple-pink.png"},
        {"gopher-doc.1bpp.lossless.webp", "gopher-doc.1bpp.png"},
        {"gopher-doc.2bpp.lossless.webp", "gopher-doc.2bpp.png"},
        {"gopher-doc.4bpp.lossless.webp", "gopher-doc.4bpp.png"},
        {"gopher-doc.8bpp.lossless.webp", "gopher-doc.8bpp.png"},
        {"tux.lossless.webp", "tux.png"},
        {"yellow_rose.lossless.webp", "yellow_rose.png"}};
    for (const auto& [file, png] : pairs)
        EXPECT_EQ(furthest(read(kGoImages / file), read(kGoImages / png)), 0) << file;
}

TEST_F(RealFiles, TgaAreTheirPngs) {
    if (!fs::exists(kPixbufImages)) GTEST_SKIP() << "gdk-pixbuf-tests is not installed";
    int compared = 0;
    for (const auto& entry : fs::directory_iterator(kPixbufImages / "reftests/tga")) {
        if (entry.path().extension() != ".tga") continue;
        fs::path png = entry.path().string() + ".ref.png";
        if (!fs::exists(png)) png = fs::path(entry.path()).replace_extension(".ref.png");
        if (!fs::exists(png)) continue;
        ++compared;
        EXPECT_EQ(furthest(read(entry.path()), read(png)), 0) << entry.path();
    }
    EXPECT_GE(compared, 40);
}

// The settings of a test of the suite: "key = value" lines under [names].
std::map<std::string, std::string> settingsIn(const fs::path& path) {
    std::map<std::string, std::string> settings;
    std::istringstream lines(contentOf(path));
    std::string section;
    for (std::string line; std::getline(lines, line);) {
        const size_t sign = line.find(" = ");
        if (!line.empty() && line[0] == '[') section = line.substr(1, line.size() - 2) + '.';
        if (sign != std::string::npos)
            settings[section + line.substr(0, sign)] = line.substr(sign + 3);
    }
    return settings;
}

// The suite shows images that follow each other without a delay as one frame; here each is a page.
TEST_F(RealFiles, GifFramesAreTheirRawPixels) {
    const fs::path suite = kPixbufImages / "gif-test-suite";
    if (!fs::exists(suite)) GTEST_SKIP() << "gdk-pixbuf-tests is not installed";
    int compared = 0;
    for (const auto& entry : fs::directory_iterator(suite)) {
        const std::string name = entry.path().stem().string();
        if (entry.path().extension() != ".conf") continue;
        // Taken for damaged: giflib doesn't read the codes of the first two, and the others have
        // frames without pixels.
        if (name == "max-codes" || name == "no-data" || name.rfind("image-zero", 0) == 0) continue;
        auto settings = settingsIn(entry.path());
        std::vector<std::string> frames;
        std::istringstream names(settings["config.frames"]);
        for (std::string frame; std::getline(names, frame, ',');) frames.push_back(frame);
        const fs::path file = suite / settings["config.input"];
        const int32_t pages = read(file).pages;
        int32_t page = 0;
        for (const std::string& frame : frames) {
            SCOPED_TRACE(name + ' ' + frame);
            Picture wanted;
            wanted.width = std::stoi(settings["config.width"]);
            wanted.height = std::stoi(settings["config.height"]);
            const std::string raw = contentOf(suite / settings[frame + ".pixels"]);
            wanted.samples.assign(raw.begin(), raw.end());
            int difference = 256;
            while (difference != 0 && page < pages)
                difference = furthest(read(file, static_cast<VORN_Word>(++page)), wanted);
            EXPECT_EQ(difference, 0);
            ++compared;
        }
    }
    EXPECT_GE(compared, 78);
}

}  // namespace
