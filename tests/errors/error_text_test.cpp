#include <gtest/gtest.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "errors/error_numbers.h"
#include "support/memory.h"
#include "tests/scratch_home.h"
#include "transport/image.h"

namespace {

class ErrorText : public testing::Test {
  protected:
    void SetUp() override { VORN_L_FreeErrorStrings(); }
    void TearDown() override { VORN_L_FreeErrorStrings(); }

    static std::string text(int32_t code, int32_t subcode = 0) {
        return VORN_H_ImageGetErrorString(code, subcode);
    }

    void load(const std::string& errors) {
        home_.write("Errors", errors);
        VORN_L_FreeErrorStrings();
    }

    ScratchHome home_;
};

TEST_F(ErrorText, LinesWithoutNumberCountOn) {
    load("First\nSecond=10\r\nThird\rText  =  5 apples\n\nNone=abc\n  Minus \t=-3\nLast\t ");
    EXPECT_EQ(text(0), "First");
    EXPECT_EQ(text(10), "Second");
    EXPECT_EQ(text(11), "Third");
    EXPECT_EQ(text(5), "Text  ");
    EXPECT_EQ(text(6), "");
    EXPECT_EQ(text(1), "Code #1,0 (Unknown error type)");
    load("one=4\ntwo=4\nthree=3\nfour");
    EXPECT_EQ(text(4), "one") << "the first text of a number counts";
    EXPECT_EQ(text(3), "three");
}

TEST_F(ErrorText, LongLinesGoOnAsTheNext) {
    const std::string exact = "a" + std::string(250, ' ') + "=  7";
    ASSERT_EQ(exact.size(), 255u);
    load(exact + "\nnext\n" + exact + "9\nlast=20\r\n");
    EXPECT_EQ(text(7).substr(0, 3), "a  ");
    EXPECT_EQ(text(8), "next");
    EXPECT_EQ(text(79), "Code #79,0 (Unknown error type)");
    load(std::string(255, 'x') + "\nsecond\n" + std::string(256, 'y') + "\nfifth\n");
    EXPECT_EQ(text(1), "second");
    EXPECT_EQ(text(3), "y");
    EXPECT_EQ(text(4), "fifth");
}

TEST_F(ErrorText, SubcodeIsDescribed) {
    load("Could not start=19\nShort of memory=17\n" + std::string(120, 't') + "=18\n");
    EXPECT_EQ(text(0x08000013), "Could not start");
    EXPECT_EQ(text(0x08000013, ENOENT), std::string("Could not start,  ") + std::strerror(ENOENT));
    EXPECT_EQ(text(17, ENOMEM), std::string("Short of memory,  ") + std::strerror(ENOMEM));
    EXPECT_EQ(text(0x08000013, static_cast<int32_t>(0x80044071)),
              "Could not start,  AVIError - No compressor");
    EXPECT_EQ(text(0x08000013, 999999), "Could not start");
    EXPECT_EQ(text(18, ENOENT), std::string(100, 't') + ",  " + std::strerror(ENOENT));
}

TEST_F(ErrorText, FallsBackWithoutATable) {
    for (const bool missing : {false, true}) {
        if (missing) {
            home_.remove("Errors");
        }
        EXPECT_EQ(text(20), "Could Not Open File");
        EXPECT_EQ(text(51), "Could not open directory");
        EXPECT_EQ(text(52), "Directory is Empty");
        EXPECT_EQ(text(0x0800002A, 5), "Code #42,5 (Couldn't read Errors file)");
    }
    load("found=42");
    vorn::failAllocation(1, true);
    EXPECT_EQ(text(42), "Code #42,0 (Couldn't read Errors file)");
    vorn::failAllocation(0);
    EXPECT_EQ(text(42), "found");
}

TEST_F(ErrorText, EveryThreadReadsTheFileOnce) {
    load("old=1");
    EXPECT_EQ(text(1), "old");
    home_.write("Errors", "new=1");
    EXPECT_EQ(text(1), "old");
    std::thread([] { EXPECT_EQ(text(1), "new"); }).join();
    VORN_L_FreeErrorStrings();
    EXPECT_EQ(text(1), "new");
}

TEST_F(ErrorText, ShippedFileKnowsEveryNumber) {
    std::filesystem::copy_file(SHIPPED_ERRORS, home_.path("Errors"),
                               std::filesystem::copy_options::overwrite_existing);
    for (const int32_t number :
         {0,  2,  3,  4,  5,  6,  15, 16, 17, 19, 20, 22, 25, 26, 27, 28,
          29, 30, 31, 32, 33, 34, 37, 40, 45, 46, 51, 52, 53, 60, 73, 1001}) {
        const std::string line = text(number);
        EXPECT_GT(line.size(), 7u) << number;
        EXPECT_NE(line.substr(0, 6), "Code #") << number;
        EXPECT_LT(line.size(), 100u) << number;
    }
    EXPECT_EQ(text(vorn::kErrorMemory), "There is not enough memory");
}

constexpr VORN_ErrorPair pairOf(int32_t code, int32_t subcode) {
    return uint64_t{static_cast<uint32_t>(subcode)} << 32 | static_cast<uint32_t>(code);
}

TEST(ErrorCodes, AreKeptForTheThreadAndTheHandle) {
    VORN_Image image, other;
    VORN_L_SetErrorCode(&image, 0x08000013, -2);
    VORN_L_SetWarningCode(&image, 7, 8);
    EXPECT_EQ(VORN_H_ImageGetError(&image), pairOf(0x08000013, -2));
    EXPECT_EQ(VORN_H_ImageGetError(nullptr), pairOf(0x08000013, -2));
    EXPECT_EQ(VORN_ErrorPairSubcode(VORN_H_ImageGetError(&image)), -2);
    EXPECT_EQ(VORN_H_ImageGetWarning(&image), pairOf(7, 8));
    EXPECT_EQ(VORN_H_ImageGetWarning(nullptr), pairOf(7, 8));
    EXPECT_EQ(VORN_H_ImageGetError(&other), 0u);

    VORN_L_SetErrorCode_DEBUG(nullptr, 5, 0, 1, 2);
    EXPECT_EQ(VORN_H_ImageGetError(nullptr), pairOf(5, 0));
    EXPECT_EQ(VORN_H_ImageGetError(&image), pairOf(0x08000013, -2));
    std::thread([] { EXPECT_EQ(VORN_H_ImageGetError(nullptr), 0u); }).join();
}

}  // namespace
