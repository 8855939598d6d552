#include "transport/attach.h"

#include <cstdio>
#include <cstring>

#include "platform/connection.h"
#include "platform/process.h"
#include "support/memory.h"
#include "transport/os_layer.h"
#include "transport/trace.h"

namespace vorn {
namespace {

constexpr int kFewestArguments = 6;
constexpr size_t kJoinedSize = 512;
constexpr size_t kWordsOfPair = 2;

bool joinArguments(int argc, char** argv, char (&joined)[kJoinedSize]) {
    size_t used = 0;
    for (int i = 0; i < argc; ++i) {
        const int written = std::snprintf(joined + used, sizeof joined - used, "%s ", argv[i]);
        if (written < 0 || static_cast<size_t>(written) >= sizeof joined - used) return false;
        used += static_cast<size_t>(written);
    }
    return true;
}

const char* skipWords(const char* text, size_t count) {
    for (; count > 0; --count) {
        text += std::strspn(text, " ");
        text += std::strcspn(text, " ");
        if (*text) ++text;
    }
    return text;
}

SemaphoreSet* openSemaphores(const char*& text) {
    SemaphoreSet* set = allocCleared<SemaphoreSet>().release();
    if (!set) return nullptr;
    set->watched = set->stop = platform::kNoDescriptor;
    set->trustsPeer = true;
    for (auto& entry : set->entry) {
        if (std::sscanf(text, "%d %11s ", &entry.handle, entry.name) != 2) entry.handle = 0;
        text = skipWords(text, kWordsOfPair);
    }
    return SemOpenSet(set) ? set : nullptr;
}

// The host's areas, seen from the other side.
bool readAreas(const char* text, SharedStuff& stuff, int32_t& hostThread) {
    if (std::sscanf(text, "%d %d %d %d %d", &stuff.readOffset, &stuff.readSize, &stuff.writeOffset,
                    &stuff.writeSize, &hostThread) != 5) {
        return false;
    }
    const auto inside = [](int64_t offset, int64_t size) {
        return offset >= 0 && size >= 0 && offset + size <= int64_t{kSharedAreaSize};
    };
    return inside(stuff.readOffset, stuff.readSize) && inside(stuff.writeOffset, stuff.writeSize);
}

bool open(SharedStuff& stuff, int argc, char** argv) {
    char joined[kJoinedSize];
    if (argc < kFewestArguments || !joinArguments(argc, argv, joined)) return false;
    const char* text = joined;
    const int fields = std::sscanf(text, "%d %7s ", &stuff.shm.handle, stuff.shm.name);
    if (fields < 1 || !ShmOpen(stuff.shm)) {
        trace("Open smem failed.\n");
        return false;
    }
    text = skipWords(text, static_cast<size_t>(fields));
    stuff.semaphores = openSemaphores(text);
    if (!stuff.semaphores) {
        trace("Open sem failed.\n");
        return false;
    }
    SemaphoreSet& set = *stuff.semaphores;
    if (!readAreas(text, stuff, set.peerThread)) return false;
    if (!platform::watchHost(set.peerThread, set.watched)) return false;
    if (!osLayer().modulesKnowTheirHost) set.peerThread = 0;
    stuff.base = ShmMap(stuff.shm);
    if (!stuff.base) trace("Open get sem pointer failed.\n");
    if (stuff.base) osLayer().shareCounts(stuff);
    return stuff.base != nullptr;
}

}  // namespace

bool SharedStuffAttach(SharedStuff& stuff, int argc, char** argv) {
    stuff.shm = ShmDescriptor{{}, 0, platform::kNoDescriptor};
    if (!open(stuff, argc, argv)) {
        SharedStuffDetach(stuff);
        return false;
    }
    stuff.writePointer = stuff.base + stuff.writeOffset;
    stuff.readPointer = stuff.base + stuff.readOffset;
    stuff.linkDown = false;
    return true;
}

void SharedStuffDetach(SharedStuff& stuff) {
    if (stuff.base) ShmUnmap(stuff.shm, stuff.base);
    ShmClose(stuff.shm);
    if (stuff.semaphores) {
        platform::closeDescriptor(stuff.semaphores->watched);
        SemCloseSet(stuff.semaphores);
    }
    stuff.semaphores = nullptr;
    stuff.base = stuff.writePointer = stuff.readPointer = nullptr;
    stuff.readHeld = false;
    stuff.linkDown = true;
}

}  // namespace vorn
