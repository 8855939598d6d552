#include "unv/signature.h"

#include <gtest/gtest.h>

#include <string>

#include "unv/file_ending.h"

namespace {

uint32_t bits(std::string_view signatures, std::string_view head) {
    return vorn::bitsPinnedDown(signatures,
                                {reinterpret_cast<const uint8_t*>(head.data()), head.size()});
}

TEST(Signature, MatchesBytesTextsWildcardsAndChoicesInsideTheHead) {
    using namespace std::string_literals;
    const std::string anymap = "0:'P'[31-36][09-0D2023]";
    const struct {
        std::string signatures, head;
        uint32_t bits;
    } cases[] = {
        {"0:89'PNG'0d0A1A0a", "\x89PNG\r\n\x1A\n...", 64},
        {"0:89'PNG'0D0A1A0A", "\x89PNG\n\x1A\n......", 0},
        {"0:'RIFF'........'WEBP'", "RIFF1234WEBPVP8 ", 64},
        {"0:'RIFF'........'WEBP'", "RIFF1234WAVEfmt ", 0},
        {"4:'ftyp'",
         "\0\0\0\x18"
         "ftypheic"s,
         32},
        {anymap, "P6\n2 2", 8 + 5 + 5},
        {anymap, "P1#comment", 18},
        {anymap, "P7\n2 2", 0},
        {anymap, "P6 ", 18},
        {anymap, "P65", 0},
        {"0:'AB',1:'BCD' , 0:'X'", "ABCD", 24},  // the best of a list counts
        {"0:'AB',1:'BCX',0:'X'", "ABCD", 16},
        {"0:'ABC'", "AB", 0},
        {"3:'A'", "AAA", 0},
        {"4:..", "AAA", 0},
        {"99999999999999999999999:41", "AAA", 0},
        {"0:'A'", "", 0},
    };
    for (const auto& c : cases) EXPECT_EQ(bits(c.signatures, c.head), c.bits) << c.signatures;
}

TEST(Signature, WhatIsWrittenWronglyMatchesNothing) {
    for (const char* broken : {"",     ",",      "41",    ":41",   "0:4",    "0:4G",      "0:'A",
                               "0:''", "0:'A'4", "0:[",   "0:[41", "0:[]41", "0:[42-41]", "0:[41-]",
                               "x:41", "-1:41",  "0:41]", "0:.",   "0x0:41", "0:+1"})
        EXPECT_EQ(bits(broken, "AAAAAAAA"), 0u) << broken;
}

TEST(FileEnding, IsFoundInAListInAnyCase) {
    EXPECT_TRUE(vorn::hasEnding("dir.x/Photo.PNG", "jpg,png"));
    EXPECT_TRUE(vorn::hasEnding("a.tar.gz", "gz"));
    EXPECT_FALSE(vorn::hasEnding("photo.pn", "jpg,png"));
    EXPECT_FALSE(vorn::hasEnding("png", "png"));
    EXPECT_FALSE(vorn::hasEnding("photo.", ",png"));
    EXPECT_FALSE(vorn::hasEnding("photo.png", ""));
}

}  // namespace
