#include "tests/lies/scripted_module.h"

#include <algorithm>

#include "support/memory.h"
#include "transport/connection.h"
#include "transport/os_layer.h"

namespace {

// The semaphores by what they mean, see the areas in transport/.
enum Entry : uint32_t { kHostAreaFree, kHostAreaFull, kModuleAreaFull, kModuleAreaFree };

// Of a host's message: more than the pictures of the tests need.
constexpr int32_t kMostTaken = 8192;

thread_local ScriptedModule* current = nullptr;

bool createBlock(uint32_t, vorn::ShmDescriptor& shm) {
    shm = vorn::ShmDescriptor{{}, 1, vorn::platform::kNoDescriptor};
    return true;
}
// One block serves every connection of a thread: the areas themselves are moved elsewhere.
uint8_t* mapBlock(const vorn::ShmDescriptor&) {
    thread_local uint8_t block[vorn::kSharedAreaSize];
    return block;
}
vorn::SemaphoreSet* createSet() { return vorn::allocCleared<vorn::SemaphoreSet>().release(); }
bool openNothing(vorn::ShmDescriptor&) { return false; }
bool openNoSet(vorn::SemaphoreSet*) { return false; }
void closeBlock(vorn::ShmDescriptor& shm) { shm = vorn::ShmDescriptor{}; }

const vorn::OsLayer kScript = {
    createBlock,
    openNothing,
    mapBlock,
    [](const vorn::ShmDescriptor&, uint8_t*) {},
    closeBlock,
    closeBlock,
    createSet,
    openNoSet,
    [](vorn::SemaphoreSet* set) { FreeMemory(set); },
    [](vorn::SemaphoreSet* set) { FreeMemory(set); },
    [](vorn::SemaphoreSet&, uint32_t entry) { return current->wait(entry); },
    [](vorn::SemaphoreSet&, uint32_t entry) { return current->tryWait(entry); },
    [](vorn::SemaphoreSet&, uint32_t entry) {
        current->post(entry);
        return true;
    },
    [](const SharedStuff&, int32_t (&)[vorn::kMostInherited]) { return size_t{0}; },
    [](SharedStuff&) {},
    [](const vorn::SemaphoreSet&, uint32_t) {},
    true,
};

// An area of its own, so that its edges are the edges of a block.
uint8_t* isolate(std::unique_ptr<uint8_t[]>& area, int32_t& size, uint32_t wanted) {
    area = std::make_unique<uint8_t[]>(wanted);
    size = static_cast<int32_t>(wanted);
    return area.get();
}

}  // namespace

const vorn::OsLayer& vorn::osLayer() { return kScript; }

ScriptedModule::ScriptedModule(int32_t type,
                               std::vector<ScriptStep> steps,
                               uint32_t areaSize,
                               bool eager)
    : image_(VORN_L_ImageVaCreateHandle(
          0, MTAG_ModuleType, VORN_Word(type), MTAG_ModuleName, VORN_Word("scripted"), TAG_End)),
      steps_(std::move(steps)),
      eager_(eager) {
    current = this;
    vorn::SharedStuffCreate(*image_, type);
    SharedStuff& stuff = image_->stuff;
    stuff.readPointer = isolate(readArea_, stuff.readSize, areaSize);
    stuff.writePointer =
        isolate(writeArea_, stuff.writeSize, static_cast<uint32_t>(stuff.writeSize));
    image_->hasProcess = true;
    image_->expectAck(0);
}

ScriptedModule::~ScriptedModule() {
    vorn::SharedStuffClose(*image_);
    VORN_L_ImageDestroyHandle(image_);
    current = nullptr;
}

bool ScriptedModule::take(uint32_t entry) {
    if (counts_[entry] == 0) return false;
    --counts_[entry];
    return true;
}

// False when the script can't go on.
bool ScriptedModule::step() {
    if (next_ == steps_.size()) return false;
    const ScriptStep& now = steps_[next_];
    if (!take(now.takes ? kHostAreaFull : kModuleAreaFree)) return false;
    const SharedStuff& stuff = image_->stuff;
    if (now.takes) {
        taken_.emplace_back(stuff.writePointer,
                            stuff.writePointer + std::min(stuff.writeSize, kMostTaken));
    } else {
        const auto room = static_cast<size_t>(stuff.readSize);
        std::copy_n(now.message.data(), std::min(now.message.size(), room), stuff.readPointer);
    }
    ++counts_[now.takes ? kHostAreaFree : kModuleAreaFull];
    ++next_;
    return true;
}

bool ScriptedModule::wait(uint32_t entry) {
    while (eager_ && step()) {
    }
    while (counts_[entry] == 0) {
        if (!step()) return false;
    }
    return tryWait(entry);
}

bool ScriptedModule::tryWait(uint32_t entry) {
    while (eager_ && step()) {
    }
    if (!take(entry)) return false;
    const SharedStuff& stuff = image_->stuff;
    if (entry == kModuleAreaFull)
        heard_.emplace_back(stuff.readPointer, stuff.readPointer + stuff.readSize);
    return true;
}

void ScriptedModule::post(uint32_t entry) { ++counts_[entry]; }
