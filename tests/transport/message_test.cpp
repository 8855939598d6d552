#include "transport/message.h"

#include <gtest/gtest.h>

#include "tests/transport/scripted_peer.h"

namespace {

// Receives one message with the given bytes; the rest of the area is filled with `filler`.
bool receive(ScriptedPeer& peer, const Bytes& bytes, vorn::Message& message, uint8_t filler = 0) {
    SharedStuff& stuff = peer.image()->stuff;
    std::memset(stuff.readPointer, filler, static_cast<size_t>(stuff.readSize));
    peer.sends(bytes);
    return peer.play([&] { return vorn::receiveMessage(*peer.image(), message); });
}

TEST(Message, ThatBreaksTheFormIsAProtocolError) {
    const uint32_t lengths[] = {0,     1,          4,          7,          9,         10,
                                98308, 0x7FFFFFFC, 0x80000000, 0xFFFFFFFC, 0xFFFFFFFF};
    std::vector<Bytes> broken;
    for (const uint32_t length : lengths) {
        broken.push_back(MessageBytes().item(ITAG_Width, length, Bytes(4)).end());
        broken.push_back(
            MessageBytes().number(ITAG_Height, 1).item(ITAG_Data, length, Bytes(4)).end());
    }
    broken.push_back(MessageBytes().item(TAG_Goto, 16, Bytes(8, 1)).end());
    broken.push_back(MessageBytes().item(TAG_Taglist, 16, Bytes(8, 1)).end());
    broken.push_back({});  // no end: items of id and length 0xFFFFFFFF
    broken.push_back(MessageBytes().item(ITAG_Data, 98304).unfinished());  // no room for an end
    broken.push_back(MessageBytes().item(ITAG_Data, 98300).unfinished());
    for (size_t i = 0; i < broken.size(); ++i) {
        ScriptedPeer peer;
        vorn::Message message;
        EXPECT_FALSE(receive(peer, broken[i], message, 0xFF)) << i;
        EXPECT_EQ(peer.errorCode(), 5) << i;
        EXPECT_FALSE(peer.image()->stuff.readHeld) << i;
    }
}

TEST(Message, MayFillTheWholeArea) {
    ScriptedPeer peer;
    vorn::Message message;
    const Bytes pixels(98304 - 12 - 8 - 8);
    const Bytes bytes = MessageBytes()
                            .number(ITAG_ReadWidth, 1)
                            .data(ITAG_Data, pixels.data(), pixels.size())
                            .end();
    ASSERT_EQ(bytes.size(), 98304u);
    EXPECT_TRUE(receive(peer, bytes, message));
    EXPECT_EQ(message.dataSize, pixels.size());
    VORN_L_ImageHandleEndReading(peer.image());
    const Bytes other(98304 - 16);
    EXPECT_TRUE(receive(
        peer, MessageBytes().data(ITAG_DataFormat, other.data(), other.size()).end(), message));
    EXPECT_EQ(VORN_L_TagListSize(message.list, nullptr), 98296u);
}

}  // namespace
