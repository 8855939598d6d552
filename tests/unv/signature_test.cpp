#include "unv/signature.h"

#include <gtest/gtest.h>

#include <string>

#include "unv/file_ending.h"

namespace {

uint32_t bits(std::string_view signatures, std::string_view head) {
    return vorn::bitsPinnedDown(signatures,
                                {reinterpret_cast<const uint8_t*>(head.data()), head.size()});
}

TEST(Signature, MatchesBytesTextsWildcardsAndChoices) {
    EXPECT_EQ(bits("0:89'PNG'0d0A1A0a", "\x89PNG\r\n\x1A\n..."), 64u);
    EXPECT_EQ(bits("0:89'PNG'0D0A1A0A", "\x89PNG\n\x1A\n......"), 0u);
    EXPECT_EQ(bits("0:'RIFF'........'WEBP'", "RIFF1234WEBPVP8 "), 64u);
    EXPECT_EQ(bits("0:'RIFF'........'WEBP'", "RIFF1234WAVEfmt "), 0u);
    EXPECT_EQ(bits("4:'ftyp'", std::string_view("\0\0\0\x18"
                                                "ftypheic",
                                                12)),
              32u);
    const char* anymap = "0:'P'[31-36][09-0D2023]";
    EXPECT_EQ(bits(anymap, "P6\n2 2"), 8u + 5u + 5u);
    EXPECT_EQ(bits(anymap, "P1#comment"), 18u);
    EXPECT_EQ(bits(anymap, "P7\n2 2"), 0u);
    EXPECT_EQ(bits(anymap, "P6 "), 18u);
    EXPECT_EQ(bits(anymap, "P65"), 0u);
}

TEST(Signature, TheBestOfAListCounts) {
    EXPECT_EQ(bits("0:'AB',1:'BCD' , 0:'X'", "ABCD"), 24u);
    EXPECT_EQ(bits("0:'AB',1:'BCX',0:'X'", "ABCD"), 16u);
}

TEST(Signature, NeverMatchesBeyondTheHead) {
    EXPECT_EQ(bits("0:'ABC'", "AB"), 0u);
    EXPECT_EQ(bits("3:'A'", "AAA"), 0u);
    EXPECT_EQ(bits("4:..", "AAA"), 0u);
    EXPECT_EQ(bits("99999999999999999999999:41", "AAA"), 0u);
    EXPECT_EQ(bits("0:'A'", ""), 0u);
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
