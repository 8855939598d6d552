#include "formats/pnm/pnm_saver.h"

#include "tests/formats/format_files.h"

namespace {

using pnm::PnmSaver;

std::vector<VORN_Word> image(VORN_Word width,
                             VORN_Word height,
                             VORN_Word channels,
                             VORN_Word colorSpace,
                             VORN_Word bytes = 1) {
    return {ITAG_Width,      width,      ITAG_Height,           height, ITAG_Channels, channels,
            ITAG_ColorSpace, colorSpace, ITAG_ImageChannelSize, bytes};
}

struct Writable {
    const char* name;
    std::vector<VORN_Word> image;
    std::string samples;
    std::string file;
};

TEST(PnmSaver, ChoosesTheKindByImageAndEnding) {
    const std::string pam = "P7\nWIDTH 1\nHEIGHT 1\nDEPTH ";
    const Writable cases[] = {
        {"a.pnm", image(2, 1, 3, VORN_CS_RGB), "rgbRGB", "P6\n2 1\n255\nrgbRGB"},
        {"a.PPM", image(1, 1, 3, VORN_CS_NONE), "rgb", "P6\n1 1\n255\nrgb"},
        {"a.ppm", image(2, 1, 1, VORN_CS_GRAY), "gh", "P6\n2 1\n255\nggghhh"},
        {"b.ppm", image(1, 1, 1, VORN_CS_GRAY, 2), "lh", "P6\n1 1\n65535\nhlhlhl"},
        {"a.pgm", image(1, 2, 1, VORN_CS_GRAY), "gh", "P5\n1 2\n255\ngh"},
        {"a", image(1, 1, 3, VORN_CS_RGB, 2), "123456", "P6\n1 1\n65535\n214365"},
        {"a.pbm", image(10, 1, 1, VORN_CS_GRAY), "\x7F\x80\x80\x80\x80\x80\x80\x80\x80\x01",
         "P4\n10 1\n\x80\x40"},
        {"a.pam", image(1, 1, 1, VORN_CS_GRAY), "g",
         pam + "1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\ng"},
        {"b.pnm", image(1, 1, 4, VORN_CS_RGB), "rgba",
         pam + "4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nrgba"},
        {"b.pgm", image(1, 1, 2, VORN_CS_GRAY, 2), "lhLH",
         pam + "2\nMAXVAL 65535\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nhlHL"},
    };
    const ScratchDirectory files;
    for (const Writable& c : cases) {
        SCOPED_TRACE(c.name);
        save<PnmSaver>(files.path(c.name), c.image, bytesOf(c.samples));
        EXPECT_EQ(contentOf(files.path(c.name)), c.file);
    }
}

TEST(PnmSaver, WritesNumbersWhenItIsSetTo) {
    const std::string black(40, '\0');
    std::string zeros = "1";
    for (int i = 1; i < 40; ++i) zeros += i == 35 ? "\n1" : " 1";  // 35 digits, 34 blanks
    const Writable cases[] = {
        {"a.pbm", image(3, 1, 1, VORN_CS_GRAY), "\x7F\x80\x10", "P1\n3 1\n1 0 1\n"},
        {"b.pbm", image(40, 1, 1, VORN_CS_GRAY), black, "P1\n40 1\n" + zeros + '\n'},
        {"a.pgm", image(2, 2, 1, VORN_CS_GRAY), "\xFF\x07\x0A\x64",
         "P2\n2 2\n255\n255 7\n10 100\n"},
        {"b.pgm", image(1, 2, 1, VORN_CS_GRAY, 2), std::string("\x01\x02\xFF\xFF", 4),
         "P2\n1 2\n65535\n513\n65535\n"},
        {"a.ppm", image(1, 1, 3, VORN_CS_RGB), "abc", "P3\n1 1\n255\n97 98 99\n"},
        {"b.ppm", image(2, 1, 1, VORN_CS_GRAY), "ab", "P3\n2 1\n255\n97 97 97 98 98 98\n"},
        {"a.pam", image(1, 1, 1, VORN_CS_GRAY), "g",
         "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\ng"},
    };
    const ScratchDirectory files;
    const UserSettings user;
    user.store("pnm", "form=Plain");
    for (const Writable& c : cases) {
        SCOPED_TRACE(c.name);
        save<PnmSaver>(files.path(c.name), c.image, bytesOf(c.samples));
        EXPECT_EQ(contentOf(files.path(c.name)), c.file);
    }
    user.store("pnm", "Form=text");
    EXPECT_EQ(failureOf([&] {
                  save<PnmSaver>(files.path("a.pnm"), image(1, 1, 3, VORN_CS_RGB), bytesOf("rgb"));
              }),
              formats::kBadOption);
}

TEST(PnmSaver, RefusesWhatTheFormatCannotHold) {
    const ScratchDirectory files;
    const auto failure = [&](const char* name, std::vector<VORN_Word> description) {
        return failureOf([&] { save<PnmSaver>(files.path(name), std::move(description), {}); });
    };
    EXPECT_EQ(failure("a.pgm", image(1, 1, 3, VORN_CS_RGB)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pbm", image(1, 1, 3, VORN_CS_RGB)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pnm", image(1, 1, 4, VORN_CS_CMYK)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pnm", image(1, 1, 1, VORN_CS_CMAPPED)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pnm", image(1, 1, 5, VORN_CS_RGB)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pnm", image(0, 1, 3, VORN_CS_RGB)), formats::kSizeOutOfRange);
    EXPECT_EQ(failure("a.pnm", {ITAG_Width, 1}), formats::kNoSize);
    EXPECT_EQ(failure("no/such/directory/a.pnm", image(1, 1, 3, VORN_CS_RGB)),
              formats::kCannotOpen);
    EXPECT_EQ(failureOf([] {
                  formats::imageToSave(Message({ITAG_Width, 1}).list());
              }),
              formats::kNoFileName);
}

TEST(PnmSaver, LeavesTheTargetAsItWasUntilAllIsWritten) {
    const ScratchDirectory files;
    const std::string path = files.write("a.ppm", "before");
    {
        auto description = image(1, 2, 3, VORN_CS_RGB);
        description.insert(description.end(), {ITAG_Filename, word(path)});
        const Message message(description);
        formats::OutputFile file(path);
        PnmSaver saver;
        saver.open(formats::imageToSave(message.list()), file);
        saver.writeLine(bytesOf("rgb").data());
    }
    EXPECT_EQ(contentOf(path), "before");
}

}  // namespace
