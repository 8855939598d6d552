// Conversions that go line by line from the loader to the saver give what a picture held whole
// gives. The loader makes its pictures up from their "file names", see tests/modules.
#include <gtest/gtest.h>
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

class Streaming : public testing::Test {
  protected:
    Streaming() {
        const std::filesystem::path built = VORN_BUILT_HOME;
        for (const char* name : {"Errors", "Savers/pnm", "Savers/pnm.cap"}) {
            home().install(name, built / name);
        }
        home().install("Savers/small", built / "Savers/png");
        home().install("Loaders/loader", VORN_TEST_LOADER);
        for (const char* name : {"saver", "saver-2"}) {
            home().install(std::string("Savers/") + name, VORN_TEST_SAVER);
        }
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

    ScratchDirectory scratch_;
    ScopedVariable variable_{"VORN", home().path()};
};

// The bytes of a file of PNM's behind its header: so many of them.
std::string lastBytes(const std::string& path, size_t count) {
    const std::string bytes = contentOf(path);
    return bytes.substr(bytes.size() - std::min(bytes.size(), count));
}

struct Case {
    const char* picture;
    Arguments options;
    int32_t colorSpace, channels, bytes;
};

class WholePictures {
  public:
    // The samples of a picture as a host gets them that reads it whole, in the order of a PNM file.
    // A width above 0 is that of a scaled picture, as the file has it.
    std::string read(const Case& picture, int from, int to, int32_t width, int32_t height) {
        EXPECT_TRUE(loader_.open(std::string(picture.picture) + ",orient=" + std::to_string(from)));
        VORN_H_ImageVaSetTags(loader_.get(), ITAG_Orientation, VORN_Word(to), ITAG_ColorSpace,
                              VORN_Word(picture.colorSpace), TAG_End);
        int32_t own[2] = {};
        VORN_H_ImageVaGetTags(loader_.get(), ITAG_Width, &own[0], ITAG_Height, &own[1], TAG_End);
        const Pixels pixels(width > 0 ? width : own[0], width > 0 ? height : own[1],
                            picture.channels, picture.bytes);
        EXPECT_TRUE(VORN_H_ImageVaReadData(loader_.get(), &pixels.buffer, TAG_End));
        loader_.close();
        std::string samples(pixels.samples.begin(), pixels.samples.end());
        for (size_t i = 0; picture.bytes == 2 && i < samples.size(); i += 2) {
            std::swap(samples[i], samples[i + 1]);  // in the file, the high byte comes first
        }
        return samples;
    }

  private:
    const Image loader_{"loader", VORN_LOADER};
};

// Small pictures for the many pairs, wide ones that take several blocks in some of them.
TEST_F(Streaming, GivesWhatWholePicturesGiveInEveryPairOfOrientations) {
    const Case kCases[] = {
        {"w=37,h=11,c=3,block=3", {}, VORN_CS_RGB, 3, 1},
        {"w=37,h=11,c=3,b=2,block=4", {"--size", "19x23!"}, VORN_CS_RGB, 3, 2},
    };
    WholePictures whole;
    for (const Case& picture : kCases) {
        for (int pair = 0; pair < 64; ++pair) {
            const int from = pair / 8, to = pair % 8;
            expectDone(convert(std::string(picture.picture) + ",orient=" + std::to_string(from),
                               "out.pnm",
                               joined({"--orientation", std::to_string(to)}, picture.options)));
            const bool scaled = !picture.options.empty();
            const std::string expected =
                whole.read(picture, from, to, scaled ? 19 : 0, scaled ? 23 : 0);
            ASSERT_TRUE(lastBytes(scratch_.path("out.pnm"), expected.size()) == expected)
                << from << " to " << to << (scaled ? ", scaled" : "");
        }
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
    const struct {
        const char* size;
        int32_t width, height;
    } sizes[] = {{"", 0, 0}, {"350x45!", 350, 45}, {"900x61!", 900, 61}};
    WholePictures whole;
    for (const Case& picture : kCases) {
        for (const auto& [size, width, height] : sizes) {
            for (const int to : {0, 4}) {
                Arguments options = {"--quiet", "--orientation", std::to_string(to)};
                if (width > 0) options = joined(options, {"--size", size});
                expectDone(convert(std::string(picture.picture) + ",orient=0", "out.pnm",
                                   joined(options, picture.options)));
                // A line that a whole read doesn't scale is no bad picture for a stream.
                if (width > 0 && std::string(picture.picture).starts_with("w=30000")) continue;
                const std::string expected = whole.read(picture, 0, to, width, height);
                ASSERT_TRUE(lastBytes(scratch_.path("out.pnm"), expected.size()) == expected)
                    << picture.picture << " " << size << " to " << to;
            }
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
