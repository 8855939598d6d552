// The module shell: attach, acknowledge, and act on the host's commands until the host ends it or
// is gone.
#include <vorn/host.h>
#include <vorn/library.h>
#include <vorn/module.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "errors/error_numbers.h"
#include "module/module_state.h"
#include "platform/limits.h"
#include "platform/process.h"
#include "tags/gathered_words.h"
#include "tags/tag_walk.h"
#include "transport/attach.h"
#include "transport/os_layer.h"

namespace vorn {
namespace {

constexpr int kExitIncompleteSaver = 20;
constexpr uint32_t kReservedCommand = 0x2003;  // accepted and ignored
constexpr uint32_t kErrorItemSize = kItemHead + sizeof ModuleState::error;

// One run of the command loop.
class Shell {
  public:
    explicit Shell(ModuleState& state) : state_(state) {}

    void run() {
        while (!done_ && round()) {
        }
        if (state_.close) state_.close();
    }

  private:
    // False when the host can't be reached any more.
    bool round() {
        ++state_.ackCounter;
        state_.interrupted = false;
        if (!sendAcknowledgement()) return false;
        const auto* message =
            static_cast<const VORN_TagItem*>(VORN_L_StartReadingSharedStuff(&state_.stuff));
        if (!message) {
            std::perror("C: getsemaphore");
            return false;
        }
        const VORN_TagItem* command = VORN_L_TagFind(message, MTAG_Command);
        if (command)
            act(static_cast<uint32_t>(VORN_L_TagGetLongVal(command)), message);
        else
            open_ = false;
        release();  // also what was not acted on, so that the next wait doesn't find it again
        if (!open_ && state_.close) state_.close();
        return true;
    }

    bool sendAcknowledgement() {
        const uint32_t errorSize = state_.errorPending ? kErrorItemSize : 0;
        void* place = VORN_L_StartWritingSharedStuff(&state_.stuff,
                                                     2 * kLongItemSize + errorSize + kEndItemSize);
        if (!place) return false;
        place = VORN_L_writetag(place, MTAG_Ack, &state_.ackCounter, sizeof state_.ackCounter);
        if (state_.errorPending)
            place = VORN_L_writetag(place, MTAG_ErrorCode, state_.error, sizeof state_.error);
        state_.errorPending = false;
        place = VORN_L_writetag(place, MTAG_Version, &state_.version, sizeof state_.version);
        VORN_L_writetag(place, TAG_End, nullptr, 0);
        VORN_L_EndWritingSharedStuff(&state_.stuff);
        return true;
    }

    bool sendErrorReply() {
        static constexpr int32_t kNone[2] = {0, 0};
        void* place = VORN_L_StartWritingSharedStuff(&state_.stuff, kErrorItemSize + kEndItemSize);
        if (!place) return false;
        const int32_t* error = state_.errorPending ? state_.error : kNone;
        VORN_L_writetag(VORN_L_writetag(place, MTAG_ErrorCode, error, sizeof state_.error), TAG_End,
                        nullptr, 0);
        VORN_L_EndWritingSharedStuff(&state_.stuff);
        return true;
    }

    void release() { VORN_L_EndReadingSharedStuff(&state_.stuff); }

    void act(uint32_t command, const VORN_TagItem* message) {
        switch (command) {
            case CMD_Terminate:
                done_ = true;
                break;
            case CMD_Abort:
                open_ = false;
                break;
            case CMD_LoadInfo:
                if (state_.loaderOpen && state_.loaderBegin) openLoader(message);
                break;
            case CMD_LoadData:
                if (state_.loaderOpen && state_.loaderBegin && state_.loaderRead) loadData(message);
                break;
            case CMD_SaveInfo:
                if (state_.saverOpen && state_.saverQuery) state_.saverQuery();
                break;
            case CMD_SaveOpen:
                if (state_.saverOpen && state_.saverBegin && !open_) openSaver(message);
                break;
            case CMD_SaveData:
                saveData(message);
                break;
            case kReservedCommand:
                break;
            case CMD_Module:
                moduleCommand(message);
                break;
            default:
                dbprint("Invalid command number = %ld\n",
                        static_cast<long>(static_cast<int32_t>(command)));
        }
    }

    // The message stays valid for both steps.
    void openLoader(const VORN_TagItem* message) {
        open_ = state_.loaderOpen(message) && state_.loaderBegin();
        release();
    }

    void loadData(const VORN_TagItem* message) {
        if (!open_) {
            openLoader(message);
        } else {
            release();
            if (!sendEmptyReply(state_)) return;
        }
        if (!open_) return;
        state_.loaderRead();
        open_ = false;
    }

    void openSaver(const VORN_TagItem* message) {
        open_ = state_.saverOpen(message) && state_.saverBegin();
        release();
    }

    void saveData(const VORN_TagItem* message) {
        if (!state_.saverOpen || !state_.saverWrite) std::exit(kExitIncompleteSaver);
        if (!open_ && state_.saverOpen(message)) {
            open_ = state_.saverBegin && state_.saverBegin();
            release();
            if (!open_ && !sendErrorReply()) return;
        }
        release();
        if (!sendEmptyReply(state_)) return;
        if (open_) {
            if (!state_.saverWrite()) sendErrorReply();
            open_ = false;
        }
        waitForInterrupt();
    }

    void waitForInterrupt() {
        bool ended = state_.interrupted;
        state_.interrupted = false;
        while (!ended) {
            const void* message = VORN_L_StartReadingSharedStuff(&state_.stuff);
            ended = !message || isInterrupt(static_cast<const VORN_TagItem*>(message));
            release();
        }
    }

    void moduleCommand(const VORN_TagItem* message) {
        if (!state_.command) {
            VORN_M_SetErrorCode(kErrorNoCommands, 0);
            return;
        }
        state_.replySent = false;
        state_.command(message);
        if (state_.replySent) return;
        state_.replySent = true;
        release();
        sendEmptyReply(state_);
    }

    ModuleState& state_;
    bool done_ = false;
    bool open_ = false;
};

void reportAbnormalExit() {
    const ModuleState& state = moduleState();
    if (!state.exitedNormally) dbprint("\t%s: Child is exiting abnormally\n", state.programName);
}

void setRoles(SharedStuff& stuff) {
    stuff.waitBeforeWrite = 3;
    stuff.postAfterWrite = 2;
    stuff.waitBeforeRead = 1;
    stuff.postAfterRead = 0;
    stuff.spareForThisSide = 5;
    stuff.spareForPeer = 4;
}

template <class Callback>
void setCallback(Callback& callback, VORN_Word value) {
    callback = reinterpret_cast<Callback>(value);
}

void setTag(ModuleState& state, uint32_t id, VORN_Word value) {
    switch (id) {
        case SHTAG_Close:
            return setCallback(state.close, value);
        case SHTAG_LoaderRead:
            return setCallback(state.loaderRead, value);
        case SHTAG_LoaderBegin:
            return setCallback(state.loaderBegin, value);
        case SHTAG_LoaderOpen:
            return setCallback(state.loaderOpen, value);
        case SHTAG_SaverWrite:
            return setCallback(state.saverWrite, value);
        case SHTAG_SaverBegin:
            return setCallback(state.saverBegin, value);
        case SHTAG_SaverOpen:
            return setCallback(state.saverOpen, value);
        case SHTAG_SaverQuery:
            return setCallback(state.saverQuery, value);
        case SHTAG_Version:
            state.version = static_cast<int32_t>(value);
            return;
        case SHTAG_Command:
            return setCallback(state.command, value);
        default:
            return;
    }
}

}  // namespace
}  // namespace vorn

extern "C" {

VORN_Bool VORN_M_SetModuleTags(uint32_t first, const VORN_Word* rest) {
    vorn::ModuleState& state = vorn::moduleState();
    for (uint32_t id = first; id != SHTAG_End; id = static_cast<uint32_t>(rest[-1])) {
        vorn::setTag(state, id, rest[0]);
        rest += 2;
    }
    return 1;
}

VORN_Bool VORN_M_SetVaModuleTags(uint32_t first, ...) {
    va_list arguments;
    va_start(arguments, first);
    const vorn::GatheredWords words(first, arguments);
    va_end(arguments);
    return words.data() && VORN_M_SetModuleTags(first, words.rest());
}

void VORN_M_ShellMain(int argc, char** argv) {
    VORN_a_Parent = 0;
    vorn::ModuleState& state = vorn::moduleState();
    if (argc >= 1) state.programName = argv[0];
    if (argc < 2) return;
    std::atexit(vorn::reportAbnormalExit);
    vorn::setRoles(state.stuff);
    if (!vorn::SharedStuffAttach(state.stuff, argc, argv)) return;
    vorn::platform::endWithHost();
    vorn::osLayer().tellLimits(*state.stuff.semaphores, state.stuff.spareForPeer);
    VORN_H_RegisterAppName(vorn::platform::hostApplication());
    vorn::Shell(state).run();
    vorn::SharedStuffDetach(state.stuff);
    state.exitedNormally = true;
}

void VORN_M_MemoryIsShort(void) { vorn::platform::tellMemoryLimit(); }

}  // extern "C"
