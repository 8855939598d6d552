#include <gtest/gtest.h>

#include "tests/module/twin.h"

namespace {

// What the host gets when a loader's open callback sends this.
Bytes sent(const std::function<bool()>& send, bool expected = true) {
    Callbacks callbacks = plainLoader();
    callbacks.loaderOpen = [&](const VORN_TagItem*) {
        EXPECT_EQ(send(), expected);
        return 1;
    };
    Twin twin(VORN_LOADER, callbacks);
    twin.receive();
    twin.send(CMD_LoadInfo);
    Bytes message = twin.receive();
    if (expected) {
        EXPECT_EQ(twin.receive(), acknowledgementOf(2));
    }
    twin.terminate();
    return message;
}

TEST(ImageInfo, IsSentAsATagList) {
    const Bytes message = sent([] {
        return VORN_M_SetVaImageInfo(ITAG_Width, VORN_Word(640), ITAG_Height, VORN_Word(480),
                                     TAG_End);
    });
    EXPECT_EQ(message, MessageBytes().number(ITAG_Width, 640).number(ITAG_Height, 480).end());
    EXPECT_EQ(message.size(), 32u);
}

TEST(ImageInfo, LeavesOutWhatCannotTravel) {
    const Bytes message = sent([] {
        return VORN_M_SetVaImageInfo(ITAG_MeterCallback, VORN_Word(1), ITAG_Artist, VORN_Word(0),
                                     ITAG_Filename, VORN_Word("xyz"), TAG_End);
    });
    EXPECT_EQ(message, MessageBytes().text(ITAG_Filename, "xyz").end());
}

TEST(ImageInfo, CompletesTheDataFormat) {
    const Bytes message = sent([] {
        struct {
            uint32_t byteCount = sizeof(VORN_DataFormat);
            VORN_DataFormat format{};
        } value;
        value.format.layout = DF_Chunky3x16;
        value.format.width = 10;
        value.format.height = 2;
        value.format.channels = 3;
        return VORN_M_SetVaImageInfo(ITAG_Width, VORN_Word(10), ITAG_DataFormat, VORN_Word(&value),
                                     TAG_End);
    });
    ASSERT_EQ(message.size(), 12u + 136u + 8u);
    VORN_DataFormat format;
    std::memcpy(&format, message.data() + 20, sizeof format);
    EXPECT_EQ(format.bytesPerChannel, 2);
    EXPECT_EQ(format.pixelStep[2], 6);
    EXPECT_EQ(format.lineStep[1], 60);
    EXPECT_EQ(format.channelPlace[2], 4u);
}

TEST(ImageInfo, LargerThanTheAreaIsNotSent) {
    const std::string text(98'304, 't');
    EXPECT_EQ(
        sent([&] { return VORN_M_SetVaImageInfo(ITAG_Artist, VORN_Word(text.c_str()), TAG_End); },
             false),
        acknowledgementOf(2));
}

}  // namespace
