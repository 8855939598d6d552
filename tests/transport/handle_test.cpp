#include <gtest/gtest.h>

#include <string>

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

template <class Value>
Value valueOf(VORN_Image* image, uint32_t id) {
    Value value{};
    EXPECT_TRUE(VORN_H_ImageVaGetTags(image, id, VORN_Word(&value), TAG_End));
    return value;
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
    int32_t missing = 77;
    EXPECT_FALSE(VORN_H_ImageVaGetTags(image, ITAG_PageNumber, VORN_Word(&missing), TAG_End));
    EXPECT_EQ(missing, 77);
    EXPECT_EQ(valueOf<int32_t>(image, ITAG_Width), -3);
    EXPECT_EQ(valueOf<double>(image, ITAG_Aspect), 1.25);
    EXPECT_STREQ(vorn::Owned<char>(valueOf<char*>(image, ITAG_Artist)).get(), "me");
    const vorn::Owned<char*> list(valueOf<char**>(image, MTAG_ColorSpaces));
    EXPECT_STREQ(list.get()[1], "Gray");
    EXPECT_EQ(list.get()[2], nullptr);
    EXPECT_EQ(vorn::Owned<uint8_t>(valueOf<uint8_t*>(image, ITAG_Palette)).get()[3], 4);
}

}  // namespace
