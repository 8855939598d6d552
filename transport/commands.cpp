// Commands that stand alone: abort, terminate, module-specific ones, and the acknowledgements that
// answer them.
#include <vorn/host.h>

#include <cstdarg>
#include <cstring>

#include "errors/error_numbers.h"
#include "platform/limits.h"
#include "tags/gathered_words.h"
#include "tags/tag_walk.h"
#include "transport/image.h"
#include "transport/message.h"
#include "transport/module_process.h"

namespace vorn {
namespace {

constexpr uint32_t kInterruptSize = kItemHead;
constexpr uint32_t kInterruptingCommandSize = kInterruptSize + kLongItemSize + kEndItemSize;
constexpr uint32_t kFirstModuleCommand = CMD_Module;

void* writeInterrupt(void* place, uint32_t command) {
    place = VORN_L_writetag(place, TAG_Interrupt, nullptr, 0);
    return VORN_L_writetag(place, MTAG_Command, &command, sizeof command);
}

bool sendInterrupt(VORN_Image* image, uint32_t command) {
    void* place = VORN_L_ImageHandleStartWriting(image, kInterruptingCommandSize);
    if (!place) return false;
    VORN_L_writetag(writeInterrupt(place, command), TAG_End, nullptr, 0);
    VORN_L_ImageHandleEndWriting(image);
    return true;
}

// Whether the command that an acknowledgement is owed for may be ended by an abort, so that one
// acknowledgement answers both.
enum class Interruption { Never, Sometimes, Always };

Interruption interruptionOf(uint32_t command) {
    // A loader takes the abort between two blocks, and says so with an empty reply before it
    // acknowledges, or it has sent its last block before; then the abort is a command of its own. A
    // saver goes on until the abort comes.
    if (command == CMD_LoadData) return Interruption::Sometimes;
    return command == CMD_SaveData ? Interruption::Always : Interruption::Never;
}

bool isEmpty(const Message& message) { return message.list->id == TAG_End && !message.data; }

// Collects the next acknowledgement, dropping what comes before it. `emptySeen` tells of an empty
// reply on the way. A patient wait takes broken messages for dropped ones: it ends only with the
// link.
struct AckWait {
    bool patient = false;
    bool emptySeen = false;
    bool errorSeen = false;

    bool collect(VORN_Image* image) {
        for (bool done = false; !done;) {
            Message message;
            if (!receiveMessage(*image, message)) {
                if (!patient || image->stuff.linkDown) return false;
                errorSeen = true;
                continue;
            }
            done = VORN_L_HandleAckMsg(image, message.list);
            const VORN_TagItem* version =
                done ? VORN_L_TagFind(message.list, MTAG_Version) : nullptr;
            if (version)
                image->moduleVersion = static_cast<uint32_t>(VORN_L_TagGetLongVal(version));
            emptySeen = emptySeen || isEmpty(message);
            errorSeen = VORN_L_HandleErrorCode(image, message.list) || errorSeen;
            VORN_L_ImageHandleEndReading(image);
        }
        return true;
    }
};

// The answer's items in one block of the caller's.
VORN_TagItem* copyAnswer(VORN_Image* image, const VORN_TagItem* list) {
    const uint32_t size = VORN_L_TagListSize(list, nullptr);
    auto* copy = static_cast<VORN_TagItem*>(AllocMemory(size + kEndItemSize, MEMORY_Clear));
    if (copy)
        VORN_L_TagCopyList(list, copy, 0);
    else
        VORN_L_SetErrorCode(image, kErrorMemory, 0);
    return copy;
}

}  // namespace
}  // namespace vorn

extern "C" {

VORN_Bool VORN_L_HandleErrorCode(VORN_Image* image, const VORN_TagItem* message) {
    const VORN_TagItem* item = VORN_L_TagFind(message, MTAG_ErrorCode);
    if (!item) return 0;
    int32_t pair[2] = {0, 0};
    const uint32_t size = vorn::itemDataSize(item);
    std::memcpy(pair, vorn::itemData(item), size < sizeof pair ? size : sizeof pair);
    // Memory that is limited is not simply short. A module may also refuse what it could have
    // tried, and doesn't always tell: where the host has set the limit, that is the reason.
    const bool limited = pair[0] == vorn::kErrorMemory && image->limits.addressSpaceBytes;
    if (limited &&
        (image->limitsSet || vorn::limitIsMet(*image, vorn::platform::kMemoryLimitPosts)))
        pair[0] = vorn::kErrorMemoryLimit;
    if (size < sizeof pair[0])
        VORN_L_SetErrorCode(image, vorn::kErrorShortErrorTag, 0);
    else if (pair[0] != 0)
        VORN_L_SetErrorCode(image, pair[0], pair[1]);
    return 1;
}

VORN_Bool VORN_L_HandleAckMsg(VORN_Image* image, const VORN_TagItem* message) {
    if (!VORN_L_TagFind(message, MTAG_Ack)) return 0;
    image->ackOutstanding = false;
    return 1;
}

VORN_Bool VORN_L_WaitForAck(VORN_Image* image) {
    if (!image->ackOutstanding) return image->errors.error.code == 0;
    vorn::AckWait wait{.patient = image->owedCommand != 0};  // not while it starts
    return wait.collect(image) && !wait.errorSeen;
}

// Afterwards the module is back in its command loop and nothing of the conversation is left over: a
// command that was under way and wasn't ended by the abort has an acknowledgement of its own.
VORN_Bool VORN_L_SendCMDAbort(VORN_Image* image) {
    const bool underWay = image->ackOutstanding;
    const vorn::Interruption interruption = vorn::interruptionOf(image->owedCommand);
    if (!vorn::sendInterrupt(image, CMD_Abort)) return 0;
    image->expectAck(CMD_Abort);
    vorn::AckWait wait{.patient = true};
    if (!wait.collect(image)) return 0;
    const bool ended = interruption == vorn::Interruption::Always ||
                       (interruption == vorn::Interruption::Sometimes && wait.emptySeen);
    if (underWay && !ended) {
        image->expectAck(CMD_Abort);
        if (!wait.collect(image)) return 0;
    }
    return !wait.errorSeen;
}

VORN_Bool VORN_L_SendCMDTerminate(VORN_Image* image) {
    return vorn::sendInterrupt(image, CMD_Terminate);
}

// The area becomes free when the module has taken the message. It is not given back: nothing
// follows.
void VORN_L_WaitForTerminate(VORN_Image* image) {
    const vorn::CodePair error = image->errors.error;
    VORN_L_ImageHandleStartWriting(image, vorn::kEndItemSize);
    VORN_L_SetErrorCode(image, error.code, error.subcode);
}

VORN_TagItem* VORN_L_SendCMD(VORN_Image* image, uint32_t command, const VORN_Word* tags) {
    const auto first = static_cast<uint32_t>(tags[0]);
    const uint32_t size = VORN_L_UserTagListSize(first, tags + 1);
    void* place =
        VORN_L_ImageHandleStartWriting(image, size + vorn::kInterruptSize + vorn::kLongItemSize);
    if (!place) return nullptr;
    VORN_L_CopyUserTags(first, tags + 1, vorn::writeInterrupt(place, command), size);
    VORN_L_ImageHandleEndWriting(image);
    image->expectAck(command);

    vorn::Message answer;
    if (!vorn::receiveMessage(*image, answer)) return nullptr;
    VORN_TagItem* copy = nullptr;
    if (!VORN_L_HandleErrorCode(image, answer.list)) copy = vorn::copyAnswer(image, answer.list);
    // A module that knows no commands sends nothing but the acknowledgement, which then ends the
    // exchange.
    VORN_L_HandleAckMsg(image, answer.list);
    VORN_L_ImageHandleEndReading(image);
    VORN_L_WaitForAck(image);
    if (image->errors.error.code == 0) return copy;
    FreeMemory(copy);
    return nullptr;
}

VORN_TagItem* VORN_H_ModuleSendCommand(VORN_Image* image, uint32_t command, const VORN_Word* tags) {
    return command < vorn::kFirstModuleCommand ? nullptr : VORN_L_SendCMD(image, command, tags);
}

VORN_TagItem* VORN_H_ModuleVaSendCommand(VORN_Image* image, uint32_t command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const vorn::GatheredWords words(arguments);
    va_end(arguments);
    if (words.data()) return VORN_H_ModuleSendCommand(image, command, words.data());
    VORN_L_SetErrorCode(image, vorn::kErrorMemory, 0);
    return nullptr;
}

}  // extern "C"
