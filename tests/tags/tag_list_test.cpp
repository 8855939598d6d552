#include <gtest/gtest.h>

#include <vector>

#include "support/memory.h"
#include "tests/tags/tag_builder.h"

namespace {

int32_t longOf(const VORN_TagItem* list, uint32_t id) {
    const VORN_TagItem* item = VORN_L_TagFind(list, id);
    return item != nullptr ? VORN_L_TagGetLongVal(item) : -1;
}

// A newest-first chain as handles keep it.
VORN_TagItem* prependLong(VORN_Tracker* tracker, VORN_TagItem* list, uint32_t id, VORN_Word value) {
    return VORN_L_TagAdd(tracker, list, id, 4, &value);
}

TEST(TagList, MessageIsTheseBytes) {
    uint8_t message[20];
    const uint8_t expected[20] = {0x06, 0, 0, 1, 0x0C, 0, 0, 0, 0x01, 0x10,
                                  0,    0, 0, 0, 0,    0, 8, 0, 0,    0};
    const int32_t command = CMD_LoadData;
    void* end = VORN_L_writetag(message, MTAG_Command, &command, 4);
    end = VORN_L_writetag(end, TAG_End, nullptr, 0);
    EXPECT_EQ(end, message + sizeof message);
    EXPECT_EQ(std::memcmp(message, expected, sizeof message), 0);
}

TEST(TagList, ReservedItemKeepsItsBytesAndIsRoundedUp) {
    uint32_t room[4] = {0, 0, 0x11111111, 0x22222222};
    EXPECT_EQ(VORN_L_writetagnodata(room, ITAG_Data, nullptr, 5), room + 4);
    EXPECT_EQ(room[1], 16u);
    EXPECT_EQ(room[2], 0x11111111u);
}

TEST(TagList, ChainGivesTheNewestValueAndTheOlderOneWhenThatIsHidden) {
    const OwnedTracker tracker(AllocTracker());
    VORN_TagItem* list = prependLong(tracker.get(), nullptr, ITAG_Width, 1);
    list = prependLong(tracker.get(), list, ITAG_Height, 5);
    list = prependLong(tracker.get(), list, ITAG_Width, 2);
    EXPECT_EQ(longOf(list, ITAG_Width), 2);
    EXPECT_EQ(longOf(list, ITAG_Height), 5);

    EXPECT_EQ(VORN_L_TagVaDestroy(list, ITAG_Width, ITAG_Artist, 0u), 1);
    EXPECT_EQ(longOf(list, ITAG_Width), 1);
    EXPECT_EQ(longOf(list, TAG_SkipTag), 2);

    const VORN_TagItem* end = VORN_L_TagFind(list, TAG_End);
    ASSERT_NE(end, nullptr);
    EXPECT_EQ(end->length, 8u);
    EXPECT_EQ(VORN_L_TagFind(list, ITAG_Artist), nullptr);
    EXPECT_EQ(VORN_L_TagFind(nullptr, TAG_End), nullptr);
}

TEST(TagList, CopiesAreFlatAndWithoutHiddenItems) {
    const OwnedTracker tracker(AllocTracker());
    VORN_TagItem* list = prependLong(tracker.get(), nullptr, ITAG_Width, 1);
    list = prependLong(tracker.get(), list, ITAG_Height, 2);
    list = prependLong(tracker.get(), list, ITAG_Alpha, 3);
    VORN_L_TagVaDestroy(list, ITAG_Height, 0u);
    const uint32_t leaveOut[] = {ITAG_Artist, ITAG_Alpha, 0};
    EXPECT_EQ(VORN_L_TagListSize(list, nullptr), 24u);
    EXPECT_EQ(VORN_L_TagListSize(list, leaveOut), 12u);
    EXPECT_EQ(VORN_L_TagListSize(nullptr, nullptr), 0u);

    const VORN_TagItem* copy = VORN_L_TagListDup(tracker.get(), list);
    ASSERT_NE(copy, nullptr);
    const uint32_t flat[] = {ITAG_Alpha, 12, 3, ITAG_Width, 12, 1, TAG_End, 0};
    EXPECT_EQ(std::memcmp(copy, flat, sizeof flat), 0);
}

TEST(TagList, TurnedCopyExchangesTheAxesOnly) {
    const std::vector<uint32_t> ids = {ITAG_Width,     ITAG_Height,    ITAG_XAspect,
                                       ITAG_YAspect,   ITAG_XDPI,      ITAG_YDPI,
                                       VORN_ID_SWAP_X, VORN_ID_SWAP_Y, ITAG_Alpha};
    TagBuilder builder;
    for (const uint32_t id : ids) builder.addLong(id, static_cast<int32_t>(id));
    uint32_t copy[27] = {};
    VORN_L_TagCopyList(builder.end(), copy, 1);
    for (size_t i = 0; i < ids.size(); ++i) {
        const size_t turned = i == 8 ? 8 : i ^ 1;
        EXPECT_EQ(copy[3 * i], ids[turned]) << i;
        EXPECT_EQ(copy[3 * i + 2], ids[i]) << i;
    }
}

TEST(TagList, SplicedListGoesOnAtTheContinuation) {
    const OwnedTracker tracker(AllocTracker());
    TagBuilder builder;
    VORN_TagItem* spliced = builder.addLong(ITAG_Width, 7).addText(ITAG_Artist, "me").end();
    VORN_TagItem* list = prependLong(tracker.get(), nullptr, ITAG_Height, 9);
    list = VORN_L_TagAdd(tracker.get(), list, TAG_Taglist, 0, spliced);
    EXPECT_EQ(longOf(list, ITAG_Width), 7);
    EXPECT_EQ(longOf(list, ITAG_Height), 9);
    EXPECT_EQ(VORN_L_TagFind(list, TAG_Taglist), nullptr);
}

TEST(TagList, OutOfMemoryGivesNull) {
    const OwnedTracker tracker(AllocTracker());
    VORN_TagItem* list = prependLong(tracker.get(), nullptr, ITAG_Width, 1);
    vorn::failAllocation(1, true);
    EXPECT_EQ(prependLong(tracker.get(), list, ITAG_Height, 2), nullptr);
    EXPECT_EQ(VORN_L_TagListDup(tracker.get(), list), nullptr);
    vorn::failAllocation(0);
    EXPECT_EQ(prependLong(nullptr, list, ITAG_Height, 2), nullptr);
}

}  // namespace
