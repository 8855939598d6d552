// Conversions that go line by line from the loader to the saver give what a picture held whole
// gives. The loader makes its pictures up from their "file names", see tests/modules.
#include <gtest/gtest.h>
#include <vorn/host.h>

#include "tests/modules/saved_picture.h"
#include "tests/modules/wished_picture.h"
#include "tests/tools/tool.h"

namespace {

// Installed once, because a thread that looks for its home keeps what it has found.
const ScratchDirectory& home() {
    static const ScratchDirectory directory;
    return directory;
}

// Under another name, and as a file of its own: a test module's orders are in its name.
void install(const std::string& name, const std::filesystem::path& program) {
    const std::string target = home().path(name);
    if (std::filesystem::exists(target)) {
        return;
    }
    std::filesystem::create_directories(std::filesystem::path(target).parent_path());
    std::error_code error;
    std::filesystem::create_hard_link(program, target, error);
    if (error) {
        std::filesystem::copy_file(program, target);
    }
}

class Streaming : public testing::Test {
  protected:
    Streaming() {
        const std::filesystem::path built = VORN_BUILT_HOME;
        for (const char* name : {"Errors", "Savers/pnm", "Savers/pnm.cap"}) {
            install(name, built / name);
        }
        install("Savers/small", built / "Savers/png");
        install("Loaders/loader", VORN_TEST_LOADER);
        install("Loaders/kill-at-block", VORN_MISBEHAVE);
        for (const char* name : {"saver", "saver-2"}) {
            install(std::string("Savers/") + name, VORN_TEST_SAVER);
        }
        install("Savers/dying", VORN_INJECTED_SAVER);
    }

    // An empty file whose path is a list of wishes to the loader.
    std::string file(const std::string& wishes) const { return scratch_.write("," + wishes, ""); }

    Ended convert(const std::string& picture,
                  const std::string& out,
                  const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = {"convert", file(picture), scratch_.path(out),
                                              "--loader", "loader"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return vorn(arguments);
    }

    ScratchDirectory scratch_;
    ScopedVariable variable_{"VORN", home().path()};
};

// The bytes of a file of PNM's behind its header: so many of them.
std::string lastBytes(const std::string& path, size_t count) {
    const std::string bytes = contentsOf(path);
    return bytes.substr(bytes.size() - std::min(bytes.size(), count));
}

struct Case {
    const char* picture;
    std::vector<std::string> options;
    int32_t colorSpace, channels, bytes;
};

class WholePictures {
  public:
    WholePictures() : loader_(VORN_H_ModuleVaOpen("loader", VORN_LOADER, TAG_End)) {}
    ~WholePictures() { VORN_H_ModuleClose(loader_); }

    // The samples of a picture as a host gets them that reads it whole, in the order of a PNM file.
    // A width above 0 is that of a scaled picture, as the file has it.
    std::string read(const Case& picture, int from, int to, int32_t width, int32_t height) {
        const std::string name = std::string(picture.picture) + ",orient=" + std::to_string(from);
        EXPECT_TRUE(VORN_H_ImageVaOpen(loader_, ITAG_Filename, name.c_str(), TAG_End));
        VORN_H_ImageVaSetTags(loader_, ITAG_Orientation, VORN_Word(to), ITAG_ColorSpace,
                              VORN_Word(picture.colorSpace), TAG_End);
        int32_t own[2] = {};
        VORN_H_ImageVaGetTags(loader_, ITAG_Width, &own[0], ITAG_Height, &own[1], TAG_End);
        VORN_ImageBuffer buffer{};
        buffer.type = VORN_BUFFER_CHUNKY;
        VORN_ChunkyBuffer& chunky = buffer.chunky;
        chunky.width = width > 0 ? width : own[0];
        chunky.height = width > 0 ? height : own[1];
        chunky.channels = picture.channels;
        chunky.bytesPerChannel = picture.bytes;
        const int32_t step = picture.channels * picture.bytes;
        std::string pixels(size_t(chunky.width) * size_t(chunky.height) * size_t(step), '\0');
        for (int32_t c = 0; c < picture.channels; ++c) {
            chunky.pixelStep[c] = step;
            chunky.lineStep[c] = step * chunky.width;
            chunky.channelPlace[c] = reinterpret_cast<uint8_t*>(&pixels[size_t(c * picture.bytes)]);
        }
        EXPECT_TRUE(VORN_H_ImageVaReadData(loader_, &buffer, TAG_End));
        VORN_H_ImageClose(loader_);
        for (size_t i = 0; picture.bytes == 2 && i < pixels.size(); i += 2) {
            std::swap(pixels[i], pixels[i + 1]);  // in the file, the high byte comes first
        }
        return pixels;
    }

  private:
    VORN_Image* loader_;
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
            std::vector<std::string> options = {"--orientation", std::to_string(to)};
            options.insert(options.end(), picture.options.begin(), picture.options.end());
            const std::string name =
                std::string(picture.picture) + ",orient=" + std::to_string(from);
            expectDone(convert(name, "out.pnm", options));
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
        {"w=700,h=90,c=3,space=YUV601", {}, VORN_CS_RGB, 3, 1},
        {"w=700,h=90,c=1,space=CMAPPED,palette=200", {}, VORN_CS_RGB, 3, 1},
        {"w=700,h=90,c=2,alpha=1,space=CMAPPED,palette=200", {}, VORN_CS_RGB, 4, 1},
        {"w=700,h=9,c=1,space=CMAPPED,palette=200", {"--depth", "16"}, VORN_CS_RGB, 3, 2},
        {"w=30000,h=5,c=3", {}, VORN_CS_RGB, 3, 1},
        {"w=1,h=1,c=1,space=Gray", {}, VORN_CS_GRAY, 1, 1},
    };
    struct Scaled {
        const char* size;
        int32_t width, height;
    };
    const Scaled kSizes[] = {{"", 0, 0}, {"350x45!", 350, 45}, {"900x61!", 900, 61}};
    WholePictures whole;
    for (const Case& picture : kCases) {
        for (const Scaled& scaled : kSizes) {
            for (const int to : {0, 4}) {
                std::vector<std::string> options = {"--quiet", "--orientation", std::to_string(to)};
                options.insert(options.end(), picture.options.begin(), picture.options.end());
                if (scaled.width > 0) {
                    options.insert(options.end(), {"--size", scaled.size});
                }
                const Ended ended =
                    convert(std::string(picture.picture) + ",orient=0", "out.pnm", options);
                // A line that a whole read doesn't scale is no bad picture for a stream.
                if (scaled.width > 0 && std::string(picture.picture).starts_with("w=30000")) {
                    expectDone(ended);
                    continue;
                }
                expectDone(ended);
                const std::string expected =
                    whole.read(picture, 0, to, scaled.width, scaled.height);
                ASSERT_TRUE(lastBytes(scratch_.path("out.pnm"), expected.size()) == expected)
                    << picture.picture << " " << scaled.size << " to " << to;
            }
        }
    }
}

TEST_F(Streaming, KeepsWhatIsTurnedInATemporaryFileThatNobodySees) {
    const std::string picture = "w=300,h=200,c=3";
    const std::vector<std::string> turned = {"--orientation", "1", "--memory", "0"};
    expectDone(convert(picture, "memory.ppm", {"--orientation", "1"}));
    const std::string folder = scratch_.makeDirectory("temporary");
    const ScopedVariable chosen("TMPDIR", folder);
    expectDone(convert(picture, "file.ppm", turned));
    EXPECT_EQ(contentsOf(scratch_.path("file.ppm")), contentsOf(scratch_.path("memory.ppm")));
    EXPECT_TRUE(std::filesystem::is_empty(folder));

    scratch_.write("file.ppm", "as it was");
    std::filesystem::remove(folder);
    const Ended ended = convert(picture, "file.ppm", turned);
    expectFailure(ended, folder, "0x8000025, 2");
    EXPECT_EQ(contentsOf(scratch_.path("file.ppm")), "as it was");
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
    struct Broken {
        std::string in;
        const char* loader;
        std::vector<std::string> options;
        bool atTarget;
        const char* numbers;
    };
    const std::string good = file("w=700,h=400,c=3");
    const auto failing = [this](const char* how) {
        return file(std::string("w=700,h=400,c=3,code=2002,fail=") + how);
    };
    const Broken kBroken[] = {
        {failing("read,failat=200"), "loader", {}, false, "2002, 0"},
        {failing("read,failat=400"), "loader", {}, false, "2002, 0"},
        {failing("read,failat=7"), "loader", {"--size", "50%"}, false, "2002, 0"},
        {failing("read,failat=400"), "loader", {"--size", "7"}, false, "2002, 0"},
        {failing("begin"), "loader", {}, false, "2002, 0"},
        {failing("read,failat=9"), "loader", {"--orientation", "1"}, false, "2002, 0"},
        {scratch_.write("any", "x"), "kill-at-block", {}, false, "3, 0"},
        {good,
         "loader",
         {"--saver", "saver", "--set", "DocumentName=fail=open,code=2004"},
         true,
         "2004, 0"},
        {good,
         "loader",
         {"--saver", "saver", "--set", "DocumentName=fail=write,failat=100,code=2004"},
         true,
         "2004, 0"},
        {good,
         "loader",
         {"--saver", "saver", "--set", "DocumentName=fail=write,failat=399,code=2004"},
         true,
         "2004, 0"},
        {good, "loader", {"--saver", "dying"}, true, "3, 0"},
    };
    const std::string out = scratch_.write("out.ppm", "as it was");
    const ScopedVariable death("VORN_TEST_STEP", "kill 30");
    for (const Broken& broken : kBroken) {
        SCOPED_TRACE(broken.in + testing::PrintToString(broken.options));
        std::vector<std::string> arguments = {"convert", broken.in, out, "--loader", broken.loader};
        arguments.insert(arguments.end(), broken.options.begin(), broken.options.end());
        expectFailure(vorn(arguments), broken.atTarget ? out : broken.in, broken.numbers);
        EXPECT_TRUE(contentsOf(out) == "as it was");
    }
}

TEST_F(Streaming, TellsBeforeTheWorkWhatTheSaverCanNotHold) {
    struct Loss {
        const char* picture;
        const char* abilities;
        std::vector<std::string> options;
        std::string words;  // "": nothing is lost
    };
    const std::string plain = "ColorSpaces=RGB\nBitsPerChannel=8\n";
    const Loss kLosses[] = {
        {"w=5,h=4,c=3", plain.c_str(), {}, ""},
        {"w=5,h=4,c=1,space=Gray", plain.c_str(), {}, ""},
        {"w=5,h=4,c=1,space=CMAPPED,palette=9", plain.c_str(), {}, ""},
        {"w=5,h=4,c=4,alpha=1", plain.c_str(), {}, "the alpha channel"},
        {"w=5,h=4,c=3,b=2", plain.c_str(), {}, "16 bits per channel (8 are kept)"},
        {"w=5,h=4,c=3,b=2", "BitsPerChannel=8,12\n", {}, "16 bits per channel (12 are kept)"},
        {"w=5,h=4,c=3,b=2", plain.c_str(), {"--depth", "8"}, ""},
        {"w=5,h=4,c=3", "ColorSpaces=Gray\nBitsPerChannel=8\n", {}, "RGB (it becomes Gray)"},
        {"w=5,h=4,c=3", "ColorSpaces=Gray\n", {"--colorspace", "Gray"}, ""},
        {"w=5,h=4,c=4,space=CMYK,paints=1", plain.c_str(), {}, "CMYK (it becomes RGB)"},
        {"w=5,h=4,c=4,space=CMYK,paints=1", "ColorSpaces=CMYK,RGB\n", {"--colorspace", "RGB"}, ""},
        {"w=5,h=4,c=3,pages=7", plain.c_str(), {}, "more than the first of 7 pages"},
        {"w=5,h=4,c=3,pages=7", plain.c_str(), {"--page", "1"}, ""},
        {"w=5,h=4,c=3", "ColorSpaces=RGB\nSizes=1x1-4x4\n", {}, "the size 5x4"},
        {"w=5,h=4,c=3", "ColorSpaces=RGB\nSizes=1x1-4x4\n", {"--orientation", "1"}, "the size 4x5"},
        {"w=5,h=4,c=3", "ColorSpaces=RGB\nSizes=1x1-4x4\n", {"--size", "4"}, ""},
        {"w=5,h=4,c=4,b=2,alpha=1",
         plain.c_str(),
         {},
         "the alpha channel, 16 bits per channel (8 are kept)"},
    };
    for (const Loss& loss : kLosses) {
        SCOPED_TRACE(std::string(loss.picture) + " " + loss.abilities);
        home().write("Savers/small.cap", loss.abilities);
        const std::string out = scratch_.path("out.png");
        const auto run = [&](const std::vector<std::string>& more) {
            std::vector<std::string> options = {"--saver", "small"};
            options.insert(options.end(), loss.options.begin(), loss.options.end());
            options.insert(options.end(), more.begin(), more.end());
            return convert(loss.picture, "out.png", options);
        };
        const std::string line =
            loss.words.empty() ? "" : "vorn: " + out + ": The saver small can't hold " + loss.words;
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
