// Files that were made by other programs, from Debian's packages of test pictures, read by a host
// and compared with what their makers say is in them. Where the packages are not installed, there
// is nothing to compare.
#include <functional>
#include <map>
#include <sstream>

#include "tests/formats/pictures.h"

namespace {

void expectPairs(const fs::path& folder,
                 const char* ending,
                 const std::function<fs::path(const fs::path&)>& pngOf,
                 double most,
                 int files) {
    if (!fs::exists(folder)) GTEST_SKIP() << folder << " is missing";
    int compared = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() != ending) continue;
        const fs::path png = pngOf(entry.path());
        if (!fs::exists(png)) continue;
        ++compared;
        EXPECT_LE(furthest(read(entry.path()), read(png)), most) << entry.path();
    }
    EXPECT_GE(compared, files);
}

// 200x32_rgb_bl_rle.tga is the picture 200x32_rgb.png.
fs::path pngOf(const fs::path& file) {
    const std::string name = file.stem();
    const fs::path folder = file.parent_path();
    if (name == "200x32_p_bl_raw_origin") return folder / "tga/common/200x32_p.png";
    for (const std::string& png : {name + ".tga.ref.png", name + ".ref.png", name + ".png",
                                   name.substr(0, std::max<size_t>(name.size(), 7) - 7) + ".png"}) {
        if (fs::exists(folder / png)) return folder / png;
    }
    return "";
}

TEST_F(RealFiles, TgaAreTheirPngs) {
    expectPairs(kPixbufImages / "reftests/tga", ".tga", pngOf, 0, 40);
    expectPairs(kPillow / "tga/common", ".tga", pngOf, 0, 24);
    expectPairs(kPillow, ".tga", pngOf, 0, 3);
}

// The names of the variants begin with that of the picture. JPEG and PNG inside BMP is not
// supported. Of palettes of the suite, the PNGs have some entries that are 1 less; of 16-bit
// colours, the variant with 11 bits rounds its own way.
TEST_F(RealFiles, BmpAreTheirPngs) {
    const fs::path folder = kPillow / "bmp";
    const std::map<std::string, std::string> others = {{"pal1wb", "pal1"},
                                                       {"pal8nonsquare", "pal8nonsquare-e"},
                                                       {"rgb32", "rgb24"},
                                                       {"rgb32bf", "rgb24"},
                                                       {"rgb32bf-xbgr", "rgb24"},
                                                       {"rgb32-111110", "rgb24"},
                                                       {"rgb32fakealpha", "rgb24"},
                                                       {"pal4rletrns", "pal4rletrns-0"},
                                                       {"pal8rletrns", "pal8rletrns-0"},
                                                       {"rgb24jpeg", ""},
                                                       {"rgb24png", ""}};
    const auto plainest = [&](const fs::path& file) {
        std::string name = file.stem();
        if (const auto other = others.find(name); other != others.end()) name = other->second;
        const auto png = [&] { return folder / "html" / (name + ".png"); };
        while (!name.empty() && !fs::exists(png())) name.pop_back();
        return png();
    };
    expectPairs(folder / "g", ".bmp", plainest, 1, 23);
    expectPairs(folder / "q", ".bmp", plainest, 1, 19);
    expectPairs(kGoImages, ".bmp", pngOf, 0, 4);
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
            for (const char sample : raw)
                wanted.samples.push_back(static_cast<uint16_t>(257 * static_cast<uint8_t>(sample)));
            double difference = 256;
            while (difference != 0 && page < pages)
                difference = furthest(read(file, static_cast<VORN_Word>(++page)), wanted);
            EXPECT_EQ(difference, 0);
            ++compared;
        }
    }
    EXPECT_GE(compared, 83);
}

// All but one, whose bytes behind the head are a picture to other programs too.
TEST_F(RealFiles, ThatMustFailDoWithAnErrorOfTheirModule) {
    if (!fs::exists(kPixbufImages)) GTEST_SKIP() << "gdk-pixbuf-tests is not installed";
    for (const auto& entry : fs::directory_iterator(kPixbufImages / "fail")) {
        const int32_t error = read(entry.path()).error;
        const bool expected = error == 28 || error == formats::kOutOfMemory ||
                              (error >= formats::kNotThisFormat && error <= formats::kUnsupported);
        EXPECT_TRUE(expected || entry.path().filename() == "invalid.2.ppm")
            << entry.path() << ' ' << error;
    }
    if (!fs::exists(kTurbo)) return;
    EXPECT_EQ(read(kTurbo / "testorig12.jpg").error, formats::kUnsupported);
}

}  // namespace
