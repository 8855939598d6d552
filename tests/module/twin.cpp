#include "tests/module/twin.h"

#include <algorithm>

#include "platform/connection.h"
#include "platform/process.h"

namespace {

// Callbacks have no context but their thread.
thread_local const Callbacks* current = nullptr;
thread_local std::string* callsOfCurrent = nullptr;

// What the shell calls for one of the test's callbacks.
template <auto kCallback>
struct Relay;
template <class Result,
          class... Arguments,
          std::function<Result(Arguments...)> Callbacks::*kCallback>
struct Relay<kCallback> {
    static inline const char* name;
    static Result call(Arguments... arguments) {
        *callsOfCurrent += *callsOfCurrent == "" ? name : std::string(" ") + name;
        return (current->*kCallback)(arguments...);
    }
};

template <auto kCallback>
void add(uint32_t id, const char* name) {
    Relay<kCallback>::name = name;
    if (current->*kCallback)
        VORN_M_SetVaModuleTags(id, VORN_Word(&Relay<kCallback>::call), SHTAG_End);
}

void registerAll() {
    using C = Callbacks;
    add<&C::close>(SHTAG_Close, "close");
    add<&C::loaderOpen>(SHTAG_LoaderOpen, "open");
    add<&C::loaderBegin>(SHTAG_LoaderBegin, "begin");
    add<&C::loaderRead>(SHTAG_LoaderRead, "read");
    add<&C::saverOpen>(SHTAG_SaverOpen, "open");
    add<&C::saverBegin>(SHTAG_SaverBegin, "begin");
    add<&C::saverWrite>(SHTAG_SaverWrite, "write");
    add<&C::saverQuery>(SHTAG_SaverQuery, "query");
    add<&C::command>(SHTAG_Command, "command");
}

}  // namespace

Callbacks plainLoader() {
    return {.close = [] {},
            .loaderOpen = [](const VORN_TagItem*) { return 1; },
            .loaderBegin = [] { return 1; },
            .loaderRead = [] {}};
}

Callbacks plainSaver() {
    return {.close = [] {},
            .saverOpen = [](const VORN_TagItem*) { return 1; },
            .saverBegin = [] { return 1; },
            .saverWrite = [] { return 1; },
            .saverQuery = [] {}};
}

Twin::Twin(int32_t type, Callbacks callbacks) : HostEnd(type), callbacks_(std::move(callbacks)) {
    thread_ = std::thread(&Twin::runModule, this, commandLineOf(image_->stuff));
}

Twin::~Twin() {
    if (thread_.joinable()) {  // the test has failed: whatever the module waits for, it gets an end
        const Bytes end =
            MessageBytes().item(TAG_Interrupt, 8).number(MTAG_Command, CMD_Terminate).end();
        std::memcpy(image_->stuff.writePointer, end.data(), end.size());
        for (int i = 0; i < 1000; ++i) {
            vorn::SemPost(*image_->stuff.semaphores, 1);
            vorn::SemPost(*image_->stuff.semaphores, 3);
        }
        thread_.join();
        ADD_FAILURE() << "The module was not told to end.";
    }
}

void Twin::runModule(std::vector<std::string> words) {
    current = &callbacks_;
    callsOfCurrent = &calls_;
    registerAll();
    VORN_M_SetVaModuleTags(SHTAG_Version, VORN_Word(VORN_PROTOCOL_VERSION), SHTAG_End);
    if (callbacks_.beforeTheShell) callbacks_.beforeTheShell();
    std::vector<char*> arguments = argumentsOf(words);
    VORN_M_ShellMain(static_cast<int>(arguments.size()), arguments.data());
    vorn::platform::postSemaphore(image_->stop);  // the host's waits end with its module
}

void Twin::send(const Bytes& message) {
    SharedStuff& stuff = image_->stuff;
    ASSERT_LE(message.size(), static_cast<size_t>(stuff.writeSize));
    ASSERT_TRUE(vorn::SemWait(*stuff.semaphores, stuff.waitBeforeWrite));
    std::copy(message.begin(), message.end(), stuff.writePointer);
    vorn::SemPost(*stuff.semaphores, stuff.postAfterWrite);
}

Bytes Twin::receive() {
    SharedStuff& stuff = image_->stuff;
    if (!vorn::SemWait(*stuff.semaphores, stuff.waitBeforeRead)) return {};
    const auto* list = reinterpret_cast<const VORN_TagItem*>(stuff.readPointer);
    const size_t size = VORN_L_TagListSize(list, nullptr) + 8;
    const Bytes message(stuff.readPointer, stuff.readPointer + size);
    vorn::SemPost(*stuff.semaphores, stuff.postAfterRead);
    return message;
}

void Twin::terminate() {
    send(command(CMD_Terminate));
    EXPECT_EQ(receive(), Bytes());
    thread_.join();
}

std::string converse(int32_t type, const Callbacks& callbacks, const std::vector<Turn>& turns) {
    Twin twin(type, callbacks);
    EXPECT_EQ(twin.receive(), acknowledgementOf(1));
    for (size_t i = 0; i < turns.size(); ++i) {
        twin.send(turns[i].said);
        for (const Bytes& answer : turns[i].answers) EXPECT_EQ(twin.receive(), answer) << i;
    }
    const std::string calls = twin.calls();
    twin.terminate();
    EXPECT_TRUE(!callbacks.close || twin.calls() != calls);
    return calls;
}
