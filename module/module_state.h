// What a module's thread remembers between the calls of its callbacks.
#pragma once

#include <vorn/module.h>

#include "transport/shared_stuff.h"

namespace vorn {

struct ModuleState {
    ModuleState() { stuff.linkDown = true; }  // until the attach

    const char* programName = "P:";
    SharedStuff stuff{};
    bool exitedNormally = false;
    uint32_t ackCounter = 0;
    bool interrupted = false;  // a host message with TAG_Interrupt came during a transfer
    VORN_CloseCallback close = nullptr;
    VORN_OpenCallback loaderOpen = nullptr;
    VORN_StepCallback loaderBegin = nullptr;
    VORN_CloseCallback loaderRead = nullptr;
    VORN_OpenCallback saverOpen = nullptr;
    VORN_StepCallback saverBegin = nullptr;
    VORN_StepCallback saverWrite = nullptr;
    VORN_CloseCallback saverQuery = nullptr;
    VORN_CommandCallback command = nullptr;
    int32_t version = 0;
    bool replySent = false;
    bool errorPending = false;
    int32_t error[2] = {0, 0};  // code, subcode
};

ModuleState& moduleState();

// Sends a lone end item. False when no area can be had.
bool sendEmptyReply(ModuleState& state);

// True when the held message begins with, or holds, TAG_Interrupt.
bool isInterrupt(const VORN_TagItem* message);

}  // namespace vorn
