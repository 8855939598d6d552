#include "formats/pnm/pnm_saver.h"

#include "tests/formats/format_files.h"

namespace {

using pnm::PnmSaver;

using Pnm = FormatTest;

TEST_F(Pnm, IsOfTheKindThatImageAndEndingAndSettingChoose) {
    const std::string pam = "P7\nWIDTH 1\nHEIGHT 1\nDEPTH ";
    const char* const plain = "form=Plain";
    const std::string black(40, '\0');
    std::string zeros = "1";
    for (int i = 1; i < 40; ++i) zeros += i == 35 ? "\n1" : " 1";  // 35 digits, 34 blanks
    const struct {
        const char* form;
        const char* name;
        std::vector<VORN_Word> image;
        std::string samples, file;
    } cases[] = {
        {"", "a.pnm", imageWords(2, 1, 3, VORN_CS_RGB), "rgbRGB", "P6\n2 1\n255\nrgbRGB"},
        {"", "a.PPM", imageWords(1, 1, 3, VORN_CS_NONE), "rgb", "P6\n1 1\n255\nrgb"},
        {"", "a.ppm", imageWords(2, 1, 1, VORN_CS_GRAY), "gh", "P6\n2 1\n255\nggghhh"},
        {"", "b.ppm", imageWords(1, 1, 1, VORN_CS_GRAY, 2), "lh", "P6\n1 1\n65535\nhlhlhl"},
        {"", "a.pgm", imageWords(1, 2, 1, VORN_CS_GRAY), "gh", "P5\n1 2\n255\ngh"},
        {"", "a", imageWords(1, 1, 3, VORN_CS_RGB, 2), "123456", "P6\n1 1\n65535\n214365"},
        {"", "a.pbm", imageWords(10, 1, 1, VORN_CS_GRAY),
         "\x7F\x80\x80\x80\x80\x80\x80\x80\x80\x01", "P4\n10 1\n\x80\x40"},
        {"", "a.pam", imageWords(1, 1, 1, VORN_CS_GRAY), "g",
         pam + "1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\ng"},
        {"", "b.pnm", imageWords(1, 1, 4, VORN_CS_RGB), "rgba",
         pam + "4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\nrgba"},
        {"", "b.pgm", imageWords(1, 1, 2, VORN_CS_GRAY, 2), "lhLH",
         pam + "2\nMAXVAL 65535\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nhlHL"},
        {plain, "a.pbm", imageWords(3, 1, 1, VORN_CS_GRAY), "\x7F\x80\x10", "P1\n3 1\n1 0 1\n"},
        {plain, "b.pbm", imageWords(40, 1, 1, VORN_CS_GRAY), black, "P1\n40 1\n" + zeros + '\n'},
        {plain, "a.pgm", imageWords(2, 2, 1, VORN_CS_GRAY), "\xFF\x07\x0A\x64",
         "P2\n2 2\n255\n255 7\n10 100\n"},
        {plain, "b.pgm", imageWords(1, 2, 1, VORN_CS_GRAY, 2), std::string("\x01\x02\xFF\xFF", 4),
         "P2\n1 2\n65535\n513\n65535\n"},
        {plain, "a.ppm", imageWords(1, 1, 3, VORN_CS_RGB), "abc", "P3\n1 1\n255\n97 98 99\n"},
        {plain, "b.ppm", imageWords(2, 1, 1, VORN_CS_GRAY), "ab",
         "P3\n2 1\n255\n97 97 97 98 98 98\n"},
        {plain, "a.pam", imageWords(1, 1, 1, VORN_CS_GRAY), "g",
         pam + "1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\ng"},
    };
    for (const auto& [form, name, image, samples, file] : cases) {
        settings_.store("pnm", form);
        save<PnmSaver>(files_.path(name), image, bytesOf(samples));
        EXPECT_EQ(files_.read(name), file) << form << name;
    }
}

TEST_F(Pnm, RefusesWhatItCannotHold) {
    const auto failure = [&](const char* name, std::vector<VORN_Word> description) {
        return saveFailure<PnmSaver>(files_.path(name), std::move(description));
    };
    EXPECT_EQ(failure("a.pgm", imageWords(1, 1, 3, VORN_CS_RGB)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pbm", imageWords(1, 1, 3, VORN_CS_RGB)), formats::kCannotSave);
    EXPECT_EQ(failure("a.pnm", imageWords(0, 1, 3, VORN_CS_RGB)), formats::kSizeOutOfRange);
    EXPECT_EQ(failure("a.pnm", {ITAG_Width, 1}), formats::kNoSize);
    EXPECT_EQ(failureOf([] {
                  formats::imageToSave(Message({ITAG_Width, 1}).list());
              }),
              formats::kNoFileName);
}

}  // namespace
