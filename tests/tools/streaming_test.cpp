// Conversions that go line by line from the loader to the saver give what a picture held whole
// gives. The loader makes its pictures up from their "file names", see tests/modules.
#include <vorn/host.h>

#include "tests/modules/saved_picture.h"
#include "tests/modules/wished_picture.h"
#include "tests/support/module_image.h"
#include "tests/tools/tool.h"

namespace {

// Installed once, because a thread that looks for its home keeps what it has found.
const ScratchDirectory& home() {
    static const ScratchDirectory directory;
    return directory;
}

// The bytes of a file of PNM's behind its header: so many of them.
std::string lastBytes(const std::string& path, size_t count) {
    const std::string bytes = contentOf(path);
    return bytes.substr(bytes.size() - std::min(bytes.size(), count));
}

struct Case {
    std::string picture;
    Arguments options;
    int32_t colorSpace, channels, bytes;
};

// Above 0: of a scaled picture, as the file has it.
struct Size {
    int32_t width = 0, height = 0;
};

class Streaming : public testing::Test {
  protected:
    Streaming() {
        const std::filesystem::path built = VORN_BUILT_HOME;
        for (const char* name : {"Errors", "Savers/pnm", "Savers/pnm.cap"})
            home().install(name, built / name);
        home().install("Savers/small", built / "Savers/png");
        home().install("Savers/full", built / "Savers/pnm");
        home().install("Loaders/loader", VORN_TEST_LOADER);
        for (const char* name : {"Savers/saver", "Savers/saver-2"})
            home().install(name, VORN_TEST_SAVER);
        home().install("Savers/dying", VORN_INJECTED_SAVER);
    }

    // An empty file whose path is a list of wishes to the loader.
    std::string file(const std::string& wishes) const { return scratch_.write("," + wishes, ""); }

    Ended convert(const std::string& picture,
                  const std::string& out,
                  const Arguments& options = {}) {
        return vorn(
            joined({"convert", file(picture), scratch_.path(out), "--loader", "loader"}, options));
    }

    // The samples of a picture as a host gets them that reads it whole, in the order of a PNM file.
    static std::string readWhole(const Case& picture, int from, int to, const Size& size) {
        const Image loader("loader", VORN_LOADER);
        EXPECT_TRUE(loader.open(picture.picture + ",orient=" + std::to_string(from)));
        loader.set(ITAG_Orientation, to, ITAG_ColorSpace, picture.colorSpace);
        const bool scaled = size.width > 0;
        const Pixels pixels(scaled ? size.width : loader.number(ITAG_Width),
                            scaled ? size.height : loader.number(ITAG_Height), picture.channels,
                            picture.bytes);
        EXPECT_TRUE(loader.read(pixels));
        std::string samples(pixels.samples.begin(), pixels.samples.end());
        for (size_t i = 0; picture.bytes == 2 && i < samples.size(); i += 2)
            std::swap(samples[i], samples[i + 1]);  // in the file, the high byte comes first
        return samples;
    }

    void expectAsWhole(const Case& picture, int from, int to, const Size& size) {
        Arguments options =
            joined({"--quiet", "--orientation", std::to_string(to)}, picture.options);
        if (size.width > 0)
            options = joined(options, {"--size", std::to_string(size.width) + 'x' +
                                                     std::to_string(size.height) + '!'});
        expectDone(
            convert(picture.picture + ",orient=" + std::to_string(from), "out.pnm", options));
        // A line that a whole read doesn't scale is no bad picture for a stream.
        if (size.width > 0 && picture.picture.starts_with("w=30000")) return;
        const std::string expected = readWhole(picture, from, to, size);
        ASSERT_TRUE(lastBytes(scratch_.path("out.pnm"), expected.size()) == expected)
            << picture.picture << ' ' << size.width << ' ' << from << " to " << to;
    }

    ScratchDirectory scratch_;
    ScopedVariable variable_{"VORN", home().path()};
};

// Small pictures for the many pairs, wide ones that take several blocks in some of them.
TEST_F(Streaming, GivesWhatWholePicturesGiveInEveryPairOfOrientations) {
    for (int pair = 0; pair < 64; ++pair) {
        expectAsWhole({"w=37,h=11,c=3,block=3", {}, VORN_CS_RGB, 3, 1}, pair / 8, pair % 8, {});
        expectAsWhole({"w=37,h=11,c=3,b=2,block=4", {}, VORN_CS_RGB, 3, 2}, pair / 8, pair % 8,
                      {19, 23});
    }
}

TEST_F(Streaming, GivesWhatWholePicturesGiveForEveryKindOfPixel) {
    const Case kCases[] = {
        {"w=700,h=90,c=3", {}, VORN_CS_RGB, 3, 1},
        {"w=700,h=90,c=3,b=2,layout=4", {}, VORN_CS_RGB, 3, 2},
        {"w=701,h=90,c=4,alpha=1", {}, VORN_CS_RGB, 4, 1},
        {"w=700,h=150,c=2,alpha=1,space=Gray", {}, VORN_CS_GRAY, 2, 1},
        {"w=700,h=90,c=3,form=planes", {"--depth", "16"}, VORN_CS_RGB, 3, 2},
        {"w=700,h=90,c=3,b=2", {"--colorspace", "Gray"}, VORN_CS_GRAY, 1, 2},
        {"w=700,h=90,c=3,b=2", {"--depth", "8"}, VORN_CS_RGB, 3, 1},
        {"w=70,h=9,c=1,space=Gray", {"--colorspace", "rgb"}, VORN_CS_RGB, 3, 1},
        {"w=700,h=90,c=3,space=YUV601", {}, VORN_CS_RGB, 3, 1},
        {"w=700,h=90,c=1,space=CMAPPED,palette=200", {}, VORN_CS_RGB, 3, 1},
        {"w=700,h=90,c=2,alpha=1,space=CMAPPED,palette=200", {}, VORN_CS_RGB, 4, 1},
        {"w=700,h=9,c=1,space=CMAPPED,palette=200", {"--depth", "16"}, VORN_CS_RGB, 3, 2},
        {"w=30000,h=5,c=3", {}, VORN_CS_RGB, 3, 1},
        {"w=1,h=1,c=1,space=Gray", {}, VORN_CS_GRAY, 1, 1},
    };
    for (const Case& picture : kCases) {
        for (const Size& size : {Size{}, Size{350, 45}, Size{900, 61}}) {
            for (const int to : {0, 4}) expectAsWhole(picture, 0, to, size);
        }
    }
}

TEST_F(Streaming, KeepsWhatIsTurnedInATemporaryFileThatNobodySees) {
    const std::string picture = "w=300,h=200,c=3";
    const Arguments turned = {"--orientation", "1", "--memory", "0"};
    expectDone(convert(picture, "memory.ppm", {"--orientation", "1"}));
    const std::string folder = scratch_.makeDirectory("temporary");
    const ScopedVariable chosen("TMPDIR", folder);
    expectDone(convert(picture, "file.ppm", turned));
    EXPECT_EQ(contentOf(scratch_.path("file.ppm")), contentOf(scratch_.path("memory.ppm")));
    EXPECT_TRUE(std::filesystem::is_empty(folder));

    scratch_.write("file.ppm", "as it was");
    std::filesystem::remove(folder);
    const Ended ended = convert(picture, "file.ppm", turned);
    expectFailure(ended, folder, "0x8000025, 2");
    EXPECT_EQ(contentOf(scratch_.path("file.ppm")), "as it was");
}

TEST_F(Streaming, TurnsForASaverThatWantsItsLinesInAnotherOrder) {
    const std::string name = "w=40,h=30,c=3,orient=0";
    const WishedPicture picture(name);
    const int pixels = 40 * 30;
    for (const std::string saver : {"saver", "saver-2"}) {
        expectDone(convert(name, "out", {"--saver", saver}));
        const std::string saved = lastBytes(scratch_.path("out"), 3 * pixels);
        for (int i = 0; i < 3 * pixels; ++i) {
            const int pixel = saver == "saver" ? i / 3 : pixels - 1 - i / 3;
            ASSERT_EQ(static_cast<unsigned char>(saved[static_cast<size_t>(i)]),
                      picture.sample(i % 3, pixel % 40, pixel / 40))
                << saver;
        }
    }
}

TEST_F(Streaming, AddsAlphaForASaverThatAlwaysWantsIt) {
    home().write("Savers/full.cap", "AlphaAlways=true\n");
    expectDone(convert("w=5,h=4,c=3", "out.pam", {"--saver", "full"}));
    const std::string saved = lastBytes(scratch_.path("out.pam"), 80);
    ASSERT_EQ(saved.size(), 80u);
    for (size_t i = 3; i < 80; i += 4) EXPECT_EQ(saved[i], '\xFF') << i;
}

TEST_F(Streaming, BreaksOffWithTheReasonOfTheSideThatFails) {
    const std::string good = file("w=700,h=400,c=3");
    const std::string out = scratch_.write("out.ppm", "as it was");
    const ScopedVariable death("VORN_TEST_STEP", "kill 30");
    const auto expectBroken = [&](const std::string& in, const Arguments& options,
                                  const std::string& named, const char* numbers) {
        SCOPED_TRACE(in + testing::PrintToString(options));
        expectFailure(vorn(joined({"convert", in, out}, options)), named, numbers);
        EXPECT_TRUE(contentOf(out) == "as it was");
    };
    const std::pair<const char*, Arguments> ofTheLoader[] = {
        {"read,failat=200", {}},
        {"read,failat=400", {}},
        {"read,failat=7", {"--size", "50%"}},
        {"read,failat=400", {"--size", "7"}},
        {"begin", {}},
        {"read,failat=9", {"--orientation", "1"}}};
    for (const auto& [how, options] : ofTheLoader) {
        const std::string in = file(std::string("w=700,h=400,c=3,code=2002,fail=") + how);
        expectBroken(in, joined({"--loader", "loader"}, options), in, "2002, 0");
    }
    const std::string deadly = file("w=700,h=400,c=3,kill=read,failat=200");
    expectBroken(deadly, {"--loader", "loader"}, deadly, "3, 0");
    for (const std::string how : {"open", "write,failat=100", "write,failat=399"})
        expectBroken(good,
                     {"--loader", "loader", "--saver", "saver", "--set",
                      "DocumentName=fail=" + how + ",code=2004"},
                     out, "2004, 0");
    expectBroken(good, {"--loader", "loader", "--saver", "dying"}, out, "3, 0");
}

TEST_F(Streaming, TellsBeforeTheWorkWhatTheSaverCanNotHold) {
    const char* const plain = "ColorSpaces=RGB\nBitsPerChannel=8\n";
    const char* const tiny = "ColorSpaces=RGB\nSizes=1x1-4x4\n";
    const struct {
        const char* picture;
        const char* abilities;
        const char* words;  // "": nothing is lost
        Arguments options = {};
    } kLosses[] = {
        {"w=5,h=4,c=3", plain, ""},
        {"w=5,h=4,c=1,space=Gray", plain, ""},
        {"w=5,h=4,c=1,space=CMAPPED,palette=9", plain, ""},
        {"w=5,h=4,c=4,alpha=1", plain, "the alpha channel"},
        {"w=5,h=4,c=3,b=2", plain, "16 bits per channel (8 are kept)"},
        {"w=5,h=4,c=3,b=2", "BitsPerChannel=8,12\n", "16 bits per channel (12 are kept)"},
        {"w=5,h=4,c=3,b=2", plain, "", {"--depth", "8"}},
        {"w=5,h=4,c=3", "ColorSpaces=Gray\nBitsPerChannel=8\n", "RGB (it becomes Gray)"},
        {"w=5,h=4,c=3", "ColorSpaces=Gray\n", "", {"--colorspace", "Gray"}},
        {"w=5,h=4,c=4,space=CMYK,paints=1", plain, "CMYK (it becomes RGB)"},
        {"w=5,h=4,c=4,space=CMYK,paints=1", "ColorSpaces=CMYK,RGB\n", "", {"--colorspace", "RGB"}},
        {"w=5,h=4,c=3,pages=7", plain, "more than the first of 7 pages"},
        {"w=5,h=4,c=3,pages=7", plain, "", {"--page", "1"}},
        {"w=5,h=4,c=3", tiny, "the size 5x4"},
        {"w=5,h=4,c=3", tiny, "the size 4x5", {"--orientation", "1"}},
        {"w=5,h=4,c=3", tiny, "", {"--size", "4"}},
        {"w=5,h=4,c=4,b=2,alpha=1", plain, "the alpha channel, 16 bits per channel (8 are kept)"},
    };
    for (const auto& loss : kLosses) {
        SCOPED_TRACE(std::string(loss.picture) + " " + loss.abilities);
        home().write("Savers/small.cap", loss.abilities);
        const std::string out = scratch_.path("out.png");
        const auto run = [&](const Arguments& more) {
            return convert(loss.picture, "out.png",
                           joined(joined({"--saver", "small"}, loss.options), more));
        };
        const std::string line =
            *loss.words == 0 ? "" : "vorn: " + out + ": The saver small can't hold " + loss.words;
        const Ended ended = run({});
        EXPECT_EQ(ended.status, 0);
        EXPECT_EQ(ended.err, line.empty() ? "" : line + "\n");
        EXPECT_TRUE(std::filesystem::remove(out));
        expectDone(run({"--quiet"}));
        EXPECT_TRUE(std::filesystem::remove(out));
        const Ended strict = run({"--strict"});
        EXPECT_EQ(strict.status, line.empty() ? 0 : 1);
        EXPECT_EQ(strict.err, line.empty() ? "" : line + " (2004, 0)\n");
        EXPECT_EQ(std::filesystem::remove(out), line.empty());
    }
}

}  // namespace
