#include <gtest/gtest.h>

#include "tests/module/twin.h"

namespace {

// Checks what the host gets when a loader's open callback sends this.
void expectSent(const std::vector<Bytes>& expected, const std::function<bool()>& send) {
    Callbacks callbacks = plainLoader();
    callbacks.loaderOpen = [&](const VORN_TagItem*) {
        EXPECT_EQ(send(), expected.size() > 1);
        return 1;
    };
    converse(VORN_LOADER, callbacks, {{command(CMD_LoadInfo), expected}});
}

TEST(ImageInfo, IsSentAsATagListWithoutWhatCannotTravel) {
    const Bytes expected = MessageBytes().number(ITAG_Width, 640).text(ITAG_Filename, "xyz").end();
    expectSent({expected, acknowledgementOf(2)}, [] {
        return VORN_M_SetVaImageInfo(ITAG_MeterCallback, VORN_Word(1), ITAG_Width, VORN_Word(640),
                                     ITAG_Artist, VORN_Word(0), ITAG_Filename, VORN_Word("xyz"),
                                     TAG_End);
    });
}

TEST(ImageInfo, CompletesTheDataFormat) {
    const FormatTag tag{.format = {DF_Chunky3x16, 10, 2, 3, 0, 0, {}, {}, {}, {}}};
    expectSent(
        {MessageBytes().format(formatOf(DF_Chunky3x16, 10, 2, 3)).end(), acknowledgementOf(2)},
        [&] { return VORN_M_SetVaImageInfo(ITAG_DataFormat, VORN_Word(&tag), TAG_End); });
}

TEST(ImageInfo, LargerThanTheAreaIsNotSent) {
    const std::string text(98'304, 't');
    expectSent({acknowledgementOf(2)}, [&] {
        return VORN_M_SetVaImageInfo(ITAG_Artist, VORN_Word(text.c_str()), TAG_End);
    });
}

}  // namespace
