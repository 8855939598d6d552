#include "tags/gathered_words.h"

#include <gtest/gtest.h>

namespace {

using vorn::GatheredWords;
using Check = void (*)(const GatheredWords&);

void gather(Check check, ...) {
    va_list arguments;
    va_start(arguments, check);
    const GatheredWords words(arguments);
    va_end(arguments);
    check(words);
}

#define EIGHT_TAGS(n)                                                                         \
    ITAG_Width, VORN_Word{n}, ITAG_Width, VORN_Word{n}, ITAG_Width, VORN_Word{n}, ITAG_Width, \
        VORN_Word{n}, ITAG_Width, VORN_Word{n}, ITAG_Width, VORN_Word{n}, ITAG_Width,         \
        VORN_Word{n}, ITAG_Width, VORN_Word {                                                 \
        n                                                                                     \
    }
#define FORTY_TAGS EIGHT_TAGS(1), EIGHT_TAGS(2), EIGHT_TAGS(3), EIGHT_TAGS(4), EIGHT_TAGS(5)

TEST(GatheredWords, GrowBeyondTheirOwnRoom) {
    gather(
        [](const GatheredWords& words) {
            ASSERT_NE(words.data(), nullptr);
            for (VORN_Word tag = 0; tag < 40; ++tag) {
                EXPECT_EQ(words.data()[2 * tag], ITAG_Width);
                EXPECT_EQ(words.data()[2 * tag + 1], tag / 8 + 1);
            }
            EXPECT_EQ(words.data()[80], TAG_End);
        },
        FORTY_TAGS, TAG_End);
    vorn::failAllocation(1);
    gather(
        [](const GatheredWords& words) {
            EXPECT_EQ(words.data(), nullptr);
            EXPECT_EQ(words.rest(), nullptr);
        },
        FORTY_TAGS, TAG_End);
    vorn::failAllocation(0);
}

}  // namespace
