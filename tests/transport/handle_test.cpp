#include <gtest/gtest.h>

#include <string>

#include "tests/support/failing_memory.h"
#include "tests/transport/scripted_peer.h"

namespace {

int32_t longTag(const VORN_TagItem* list, uint32_t id) {
    const VORN_TagItem* item = VORN_L_TagFind(list, id);
    return item ? VORN_L_TagGetLongVal(item) : -1;
}

TEST(Handle, KeepsFourTagsThroughAReset) {
    VORN_Image* image = VORN_L_ImageVaCreateHandle(
        0, ITAG_Input, VORN_Word(0), ITAG_Output, VORN_Word(1), MTAG_ModuleType,
        VORN_Word(VORN_SAVER), MTAG_ModuleName, VORN_Word("x"), ITAG_Width, VORN_Word(5), TAG_End);
    ASSERT_NE(image, nullptr);
    // In the side list of a saver.
    VORN_Word words[] = {ITAG_Input, 7, ITAG_XDPI, 300, TAG_End};
    vorn::ImageAddTags(image, VORN_SAVER, words);
    VORN_L_SetErrorCode(image, 5, 6);
    EXPECT_EQ(VORN_L_ImageResetHandle(image), image);
    EXPECT_EQ(VORN_H_ImageGetError(image), 0u);
    EXPECT_EQ(longTag(image->imageTags, ITAG_Output), 1);
    EXPECT_EQ(longTag(image->imageTags, ITAG_Input), 0);
    EXPECT_EQ(VORN_L_ImageGetModType(image), VORN_SAVER);
    EXPECT_NE(VORN_L_TagFind(image->imageTags, MTAG_ModuleName), nullptr);
    EXPECT_EQ(longTag(image->sideTags, ITAG_Input), 7);
    EXPECT_EQ(longTag(image->imageTags, ITAG_Width), -1);
    EXPECT_EQ(longTag(image->sideTags, ITAG_XDPI), -1);
    VORN_L_ImageDestroyHandle(image);
}

TEST(Handle, AnswersLoaderWhenNothingSaysItsType) {
    VORN_Image* image = VORN_L_ImageVaCreateHandle(0, VORN_ID_OPTION_8, VORN_Word(0x1FF), TAG_End);
    EXPECT_EQ(VORN_L_ImageGetModType(image), VORN_LOADER);
    EXPECT_EQ(image->option8, 0xFF);
    EXPECT_EQ(image->imageTags, nullptr);
    VORN_L_ImageDestroyHandle(image);
    EXPECT_EQ(VORN_L_ImageResetHandle(nullptr), nullptr);
}

TEST(Handle, WhoseResetRanOutOfMemoryTakesNoTags) {
    failAtEachAllocation([](auto withFailure) {
        VORN_Image* image = VORN_L_ImageVaCreateHandle(0, MTAG_ModuleType, VORN_Word(1),
                                                       MTAG_ModuleName, VORN_Word("x"), TAG_End);
        const auto [reset, failed] = withFailure([&] { return VORN_L_ImageResetHandle(image); });
        EXPECT_EQ(reset == nullptr, failed);
        if (failed) {
            EXPECT_EQ(VORN_ErrorPairCode(VORN_H_ImageGetError(image)), 17);
        }
        // Without a tracker nothing can be added, and that is said.
        if (!image->tracker) {
            EXPECT_FALSE(VORN_H_ImageVaSetTags(image, ITAG_Width, VORN_Word(1), TAG_End));
        }
        VORN_L_ImageDestroyHandle(image);
    });
}

TEST(TagExchange, StoresTheHostsTagsWhereTheModuleTypeSays) {
    for (const int32_t type : {VORN_LOADER, VORN_SAVER}) {
        ScriptedPeer peer(type);
        VORN_Image* image = peer.image();
        const auto* side = type == VORN_LOADER ? &image->sideTags : &image->imageTags;
        VORN_Word more[] = {ITAG_YDPI, 72, TAG_End};
        const VORN_Word* cursor = more;
        EXPECT_TRUE(VORN_H_ImageVaSetTags(
            image, ITAG_XDPI, VORN_Word(300), TAG_SkipTag, VORN_Word(1), TAG_VaList,
            VORN_Word(&cursor), ITAG_MeterCallback, VORN_Word(1), ITAG_Artist, VORN_Word(0),
            VORN_ID_OPTION_9, VORN_Word(9), ITAG_XDPI, VORN_Word(150), TAG_End));
        EXPECT_EQ(longTag(*side, ITAG_XDPI), 150);
        EXPECT_EQ(longTag(*side, ITAG_YDPI), 72);
        EXPECT_EQ(image->option9, 9);
        for (const uint32_t id : {ITAG_MeterCallback, ITAG_Artist, TAG_SkipTag, VORN_ID_OPTION_9}) {
            EXPECT_EQ(VORN_L_TagFind(*side, id), nullptr) << id;
        }
    }
}

TEST(TagExchange, GivesCopiesOfEveryType) {
    ScriptedPeer peer(VORN_SAVER);
    VORN_Image* image = peer.image();
    const double aspect = 1.25;
    const char* spaces[] = {"RGB", "Gray", nullptr};
    struct {
        uint32_t count;
        char bytes[4];
    } block = {4, {1, 2, 3, 4}};
    ASSERT_TRUE(VORN_H_ImageVaSetTags(image, ITAG_Width, VORN_Word(-3), ITAG_Artist,
                                      VORN_Word("me"), ITAG_Aspect, VORN_Word(&aspect),
                                      MTAG_ColorSpaces, VORN_Word(spaces), ITAG_Palette,
                                      VORN_Word(&block), TAG_End));
    int32_t width = 0;
    double number = 0;
    char* artist = nullptr;
    char** list = nullptr;
    uint8_t* data = nullptr;
    int32_t missing = 77;
    EXPECT_FALSE(VORN_H_ImageVaGetTags(image, ITAG_PageNumber, VORN_Word(&missing), ITAG_Width,
                                       VORN_Word(&width), ITAG_Artist, VORN_Word(&artist),
                                       ITAG_Aspect, VORN_Word(&number), MTAG_ColorSpaces,
                                       VORN_Word(&list), ITAG_Palette, VORN_Word(&data), TAG_End));
    EXPECT_EQ(missing, 77);
    EXPECT_EQ(width, -3);
    EXPECT_EQ(number, 1.25);
    EXPECT_STREQ(artist, "me");
    EXPECT_STREQ(list[1], "Gray");
    EXPECT_EQ(list[2], nullptr);
    EXPECT_EQ(data[3], 4);
    VORN_L_TagFreeString(artist);
    VORN_L_TagFreeData(list);
    VORN_L_TagFreeData(data);
}

}  // namespace
