// Receiving the module's messages. Nothing that comes out of the shared area is believed: a message
// is copied into private memory item by item, each head read once and checked in the copy, and only
// the copy is looked at.
#pragma once

#include <vorn/library.h>

namespace vorn {

struct Message {
    const VORN_TagItem* list =
        nullptr;  // private, flat, every item inside the message; valid until the next receive
    const uint8_t* data = nullptr;  // ITAG_Data's bytes, which stay in the shared area (null: none)
    uint32_t dataSize = 0;
};

// Makes the private memory of a new handle, large enough for every message without much data: so an
// acknowledgement can be received even when memory has run out since. False when it has already.
bool makeMessageBuffer(VORN_Image& image);

// Waits for the module's next message and copies all of it but ITAG_Data's bytes. On success the
// message is held: release it with VORN_L_ImageHandleEndReading as soon as its data bytes are
// taken. On failure (errors 3, 5, 17) nothing is held.
bool receiveMessage(VORN_Image& image, Message& message);

// The same without waiting. False without an error when there is no message.
bool tryReceiveMessage(VORN_Image& image, Message& message, bool& broken);

}  // namespace vorn
