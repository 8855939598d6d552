#include <gtest/gtest.h>

#include "tags/gathered_words.h"
#include "tests/tags/tag_builder.h"

namespace {

// Converts a user tag list and checks that the announced and the written size agree.
uint32_t convert(const VORN_Word* words, void* out) {
    const auto first = static_cast<uint32_t>(words[0]);
    const uint32_t size = VORN_L_UserTagListSize(first, words + 1);
    EXPECT_EQ(VORN_L_CopyUserTags(first, words + 1, out, size), size);
    return size;
}

TEST(UserTags, EveryTypeIsStoredWithItsLength) {
    const double aspect = 1.25;
    const struct {
        uint32_t count;
        char bytes[5];
    } block = {5, {1, 2, 3, 4, 5}};
    const char* const strings[] = {"ab", "cde", nullptr};
    const VORN_Word words[] = {ITAG_Width,    static_cast<VORN_Word>(int64_t{-640}),
                               ITAG_Artist,   word("abc"),
                               ITAG_Model,    word(""),
                               ITAG_Make,     word("abcd"),
                               ITAG_Data,     word(&block),
                               MTAG_Sizes,    word(strings),
                               ITAG_Aspect,   word(&aspect),
                               TAG_Interrupt, 77,
                               0x07000001u,   77,
                               TAG_End};
    alignas(8) uint8_t out[256];
    std::memset(out, 0xCC, sizeof out);
    EXPECT_EQ(convert(words, out), 12u + 12 + 12 + 16 + 16 + 20 + 16 + 8 + 8 + 8);

    const auto* list = reinterpret_cast<const VORN_TagItem*>(out);
    EXPECT_EQ(VORN_L_TagGetLongVal(VORN_L_TagFind(list, ITAG_Width)), -640);
    EXPECT_EQ(VORN_L_TagGetDoubleVal(VORN_L_TagFind(list, ITAG_Aspect)), 1.25);
    const uint8_t padded[8] = {1, 2, 3, 4, 5, 0, 0, 0};
    EXPECT_EQ(std::memcmp(VORN_L_TagFind(list, ITAG_Data) + 1, padded, 8), 0);
    const uint8_t listed[12] = {2, 0, 0, 0, 'a', 'b', 0, 'c', 'd', 'e', 0, 0};
    EXPECT_EQ(std::memcmp(VORN_L_TagFind(list, MTAG_Sizes) + 1, listed, 12), 0);
    EXPECT_EQ(VORN_L_TagFind(list, TAG_Interrupt)->length, 8u);
    EXPECT_EQ(VORN_L_TagFind(list, 0x07000001u)->length, 8u);
}

TEST(UserTags, WhatCannotBeStoredIsLeftOut) {
    const VORN_Word words[] = {
        ITAG_Artist,    0, ITAG_Data, 0, MTAG_Sizes, 0, ITAG_MeterCallback, word(&words),
        ITAG_ReadWidth, 3, TAG_End};
    uint32_t out[5];
    EXPECT_EQ(convert(words, out), 20u);
    EXPECT_EQ(out[0], ITAG_ReadWidth);
    const VORN_Word none[] = {TAG_End};
    EXPECT_EQ(convert(none, out), 8u);
    EXPECT_EQ(out[1], 8u);
}

TEST(UserTags, TagListIsSplicedInPlace) {
    TagBuilder builder;
    const VORN_TagItem* spliced = builder.addLong(ITAG_Width, 7).addLong(ITAG_Height, 8).end();
    const VORN_Word words[] = {ITAG_Alpha,    1, TAG_Taglist, word(spliced),
                               ITAG_Channels, 4, TAG_End};
    uint32_t out[14];
    const uint32_t expected[14] = {ITAG_Alpha,    12, 1, ITAG_Width, 12, 7, ITAG_Height, 12, 8,
                                   ITAG_Channels, 12, 4, TAG_End,    8};
    EXPECT_EQ(convert(words, out), sizeof expected);
    EXPECT_EQ(std::memcmp(out, expected, sizeof expected), 0);
}

TEST(UserTags, SearchGoesOnAtTheArgumentCursor) {
    const VORN_Word behind[] = {ITAG_Height, 2, TAG_End};
    const VORN_Word* cursor = behind;
    const VORN_Word highHalf = ~VORN_Word{0xFFFFFFFFu};  // which doesn't count
    const VORN_Word words[] = {
        highHalf | ITAG_Width, 1, TAG_VaList, word(&cursor), ITAG_Alpha, 3, TAG_End};
    VORN_Word value = 0;
    EXPECT_TRUE(VORN_L_FindAPILongTag(words, ITAG_Width, &value, 9));
    EXPECT_EQ(value, 1u);
    EXPECT_TRUE(VORN_L_FindAPIStringTag(words, ITAG_Height, &value, 9));
    EXPECT_EQ(value, 2u);
    EXPECT_FALSE(VORN_L_FindAPILongTag(words, ITAG_Alpha, &value, 9));
    EXPECT_EQ(value, 9u);
    EXPECT_TRUE(VORN_L_FindAPILongTag(words, ITAG_Height, nullptr, 9));
}

using vorn::GatheredWords;

// Without memory there are no words.
void gather(int hasMemory, ...) {
    va_list arguments;
    va_start(arguments, hasMemory);
    vorn::failAllocation(hasMemory ? 0 : 1);
    const GatheredWords words(arguments);
    vorn::failAllocation(0);
    va_end(arguments);
    ASSERT_EQ(words.data() != nullptr, hasMemory != 0);
    for (VORN_Word tag = 0; hasMemory && tag < 40; ++tag) {
        EXPECT_EQ(words.data()[2 * tag], tag % 2 ? ITAG_Height : ITAG_Width);
        EXPECT_EQ(words.data()[2 * tag + 1], 7 + tag % 2);
    }
    EXPECT_EQ(hasMemory ? words.data()[80] : 0u, TAG_End);
    EXPECT_EQ(words.rest() != nullptr, hasMemory != 0);
}

#define TWO_TAGS \
    ITAG_Width, VORN_Word{7}, ITAG_Height, VORN_Word { 8 }
#define TEN_TAGS TWO_TAGS, TWO_TAGS, TWO_TAGS, TWO_TAGS, TWO_TAGS
#define FORTY_TAGS TEN_TAGS, TEN_TAGS, TEN_TAGS, TEN_TAGS

TEST(GatheredWords, GrowBeyondTheirOwnRoom) {
    gather(1, FORTY_TAGS, TAG_End);
    gather(0, FORTY_TAGS, TAG_End);
}

}  // namespace
