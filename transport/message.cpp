#include "transport/message.h"

#include <cstring>

#include "errors/error_numbers.h"
#include "tags/tag_walk.h"
#include "transport/image.h"

namespace vorn {
namespace {

constexpr uint32_t kFirstBufferSize = 4096;

enum class Copied { Whole, Broken, NoMemory };

// Reads a word of the shared area once: the compiler must not fetch it again after a check.
uint32_t wordAt(const uint8_t* place) {
    return __atomic_load_n(reinterpret_cast<const uint32_t*>(place), __ATOMIC_RELAXED);
}

bool makeRoom(MessageBuffer& buffer, uint32_t used, uint32_t more) {
    if (buffer.size - used >= more) return true;
    uint32_t size = buffer.size ? buffer.size : kFirstBufferSize;
    while (size - used < more) size *= 2;
    Owned<uint8_t> bytes(static_cast<uint8_t*>(AllocMemory(size, 0)));
    if (!bytes) return false;
    if (used) std::memcpy(bytes.get(), buffer.bytes.get(), used);
    buffer.bytes = std::move(bytes);
    buffer.size = size;
    return true;
}

// A list in the shared area is flat, and every item of it lies inside.
bool isAllowed(VORN_TagItem head, uint32_t room) {
    if (head.id == TAG_Goto || head.id == TAG_Taglist) return false;
    return head.length >= kItemHead && head.length % 4 == 0 && head.length <= room;
}

Copied append(MessageBuffer& buffer, uint32_t& used, VORN_TagItem head, const uint8_t* data) {
    if (!makeRoom(buffer, used, head.length)) return Copied::NoMemory;
    uint8_t* place = buffer.bytes.get() + used;
    std::memcpy(place, &head, sizeof head);
    std::memcpy(place + kItemHead, data, head.length - kItemHead);
    used += head.length;
    return Copied::Whole;
}

Copied copyMessage(MessageBuffer& buffer, const uint8_t* area, uint32_t size, Message& message) {
    message = Message{};
    uint32_t used = 0;
    for (uint32_t offset = 0; size - offset >= kItemHead;) {
        VORN_TagItem head{wordAt(area + offset), wordAt(area + offset + 4)};
        if (head.id == TAG_End) head.length = kEndItemSize;  // no reader looks at its length
        if (!isAllowed(head, size - offset)) return Copied::Broken;
        const uint8_t* data = area + offset + kItemHead;
        if (head.id == ITAG_Data) {
            message.data = data;
            message.dataSize = head.length - kItemHead;
        } else if (const Copied copied = append(buffer, used, head, data);
                   copied != Copied::Whole) {
            return copied;
        }
        if (head.id == TAG_End) {
            message.list = reinterpret_cast<const VORN_TagItem*>(buffer.bytes.get());
            return Copied::Whole;
        }
        offset += head.length;
    }
    return Copied::Broken;
}

// Copies the message that is held, or records the error and gives it back.
bool takeHeld(VORN_Image& image, const void* area, Message& message) {
    const auto size = static_cast<uint32_t>(image.stuff.readSize);
    const Copied copied =
        copyMessage(image.message, static_cast<const uint8_t*>(area), size, message);
    if (copied == Copied::Whole) return true;
    VORN_L_SetErrorCode(&image, copied == Copied::NoMemory ? kErrorMemory : kErrorProtocol, 0);
    VORN_L_ImageHandleEndReading(&image);
    return false;
}

}  // namespace

bool makeMessageBuffer(VORN_Image& image) { return makeRoom(image.message, 0, kFirstBufferSize); }

bool receiveMessage(VORN_Image& image, Message& message) {
    const void* area = VORN_L_ImageHandleStartReading(&image);
    return area && takeHeld(image, area, message);
}

bool tryReceiveMessage(VORN_Image& image, Message& message, bool& broken) {
    const void* area = VORN_L_AttemptStartReadingSharedStuff(&image.stuff);
    const bool taken = area && takeHeld(image, area, message);
    broken = area && !taken;
    return taken;
}

}  // namespace vorn
