// The image handle: a host's record of one module connection.
#pragma once

#include <vorn/library.h>

#include <atomic>

#include "errors/error_record.h"
#include "platform/process.h"
#include "support/memory.h"
#include "transport/shared_stuff.h"

namespace vorn {

// The lines of the module's current data block, see pixels/.
struct BlockPosition {
    int32_t linesLeft = 0;          // 0: a new block must be fetched
    int32_t line = 0;               // the next line to take
    int32_t width = 0;              // the block's ITAG_ReadWidth
    const uint8_t* data = nullptr;  // in the shared area, valid while the message is held
};

using OrientationRoutine = void (*)(VORN_ChunkyBuffer& buffer);

// Private memory that messages of the module are copied into before they are believed.
struct MessageBuffer {
    Owned<uint8_t> bytes;
    uint32_t size = 0;
};

}  // namespace vorn

struct VORN_Image {
    SharedStuff stuff{};
    vorn::platform::Process process;
    std::atomic<bool> hasProcess{false};  // false: the handle holds no module program
    // Set and posted by the emergency stop, and taken back when a module is asked for the next
    // time: so a stop counts from the beginning of the call that starts a module. The semaphore
    // lives as long as the handle, so that the stop never meets a connection that another thread is
    // taking down.
    std::atomic<bool> stopped{false};
    int32_t stop = -1;
    vorn::platform::ProcessLimits limits;  // of the module program
    bool limitsSet = false;                // by the host
    int32_t limitPosts = 0;  // what the module program has told, see platform/limits.h
    bool ackOutstanding = false;
    uint32_t owedCommand = 0;  // the command that the outstanding acknowledgement is owed for
    uint32_t moduleVersion = 0;
    vorn::ErrorRecord errors;
    uint8_t option8 = 0;
    uint8_t option9 = 0;
    vorn::Owned<char> moduleName;  // path of the module program that was started last
    VORN_Tracker* tracker = nullptr;
    VORN_TagItem* imageTags = nullptr;  // list A: what the image is
    VORN_TagItem* sideTags = nullptr;   // list B: a loader's host's wishes, a saver's information
    vorn::MessageBuffer message;

    // The pixel path's fields.
    vorn::BlockPosition block;
    vorn::OrientationRoutine orientation = nullptr;
    uint32_t colorConversion = 0;
    int32_t targetColorSpace = -1;  // -1: not named
    bool axesSwapped = false;
    bool sizeDiffers = false;
    bool prepared = false;    // a preparation has set the output size
    int32_t outputWidth = 0;  // in the module's terms
    int32_t outputHeight = 0;

    // A command has been sent.
    void expectAck(uint32_t command) {
        ackOutstanding = true;
        owedCommand = command;
    }
};
