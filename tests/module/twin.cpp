#include "tests/module/twin.h"

#include <unistd.h>

#include <algorithm>

#include "platform/connection.h"
#include "platform/process.h"

namespace {

// Callbacks have no context but their thread.
thread_local const Callbacks* current = nullptr;
thread_local std::string* callsOfCurrent = nullptr;

template <class Member, class... Arguments>
auto call(const char* name, Member member, Arguments... arguments) {
    *callsOfCurrent += *callsOfCurrent == "" ? name : std::string(" ") + name;
    return (current->*member)(arguments...);
}

template <class Function>
void registerOne(uint32_t id, bool wanted, Function* function) {
    if (wanted) VORN_M_SetVaModuleTags(id, reinterpret_cast<VORN_Word>(function), SHTAG_End);
}

using Message = const VORN_TagItem*;

void registerAll(const Callbacks& c) {
    registerOne(
        SHTAG_Close, !!c.close, +[] { call("close", &Callbacks::close); });
    registerOne(
        SHTAG_LoaderOpen, !!c.loaderOpen,
        +[](Message m) { return call("open", &Callbacks::loaderOpen, m); });
    registerOne(
        SHTAG_LoaderBegin, !!c.loaderBegin, +[] { return call("begin", &Callbacks::loaderBegin); });
    registerOne(
        SHTAG_LoaderRead, !!c.loaderRead, +[] { call("read", &Callbacks::loaderRead); });
    registerOne(
        SHTAG_SaverOpen, !!c.saverOpen,
        +[](Message m) { return call("open", &Callbacks::saverOpen, m); });
    registerOne(
        SHTAG_SaverBegin, !!c.saverBegin, +[] { return call("begin", &Callbacks::saverBegin); });
    registerOne(
        SHTAG_SaverWrite, !!c.saverWrite, +[] { return call("write", &Callbacks::saverWrite); });
    registerOne(
        SHTAG_SaverQuery, !!c.saverQuery, +[] { call("query", &Callbacks::saverQuery); });
    registerOne(
        SHTAG_Command, !!c.command, +[](Message m) { call("command", &Callbacks::command, m); });
}

// The module's command line, with descriptors of its own for the module to close.
std::vector<std::string> commandLineFor(const SharedStuff& stuff) {
    std::vector<std::string> words = {std::to_string(::dup(stuff.shm.handle)), stuff.shm.name};
    for (const auto& entry : stuff.semaphores->entry) {
        words.push_back(std::to_string(::dup(entry.handle)));
        words.push_back(entry.name);
    }
    for (const int32_t number : {stuff.writeOffset, stuff.writeSize, stuff.readOffset,
                                 stuff.readSize, vorn::platform::currentThreadId()}) {
        words.push_back(std::to_string(number));
    }
    return words;
}

}  // namespace

Callbacks plainLoader() {
    Callbacks callbacks;
    callbacks.close = [] {};
    callbacks.loaderOpen = [](Message) { return 1; };
    callbacks.loaderBegin = [] { return 1; };
    callbacks.loaderRead = [] {};
    return callbacks;
}

Callbacks plainSaver() {
    Callbacks callbacks;
    callbacks.close = [] {};
    callbacks.saverOpen = [](Message) { return 1; };
    callbacks.saverBegin = [] { return 1; };
    callbacks.saverWrite = [] { return 1; };
    callbacks.saverQuery = [] {};
    return callbacks;
}

Twin::Twin(int32_t type, Callbacks callbacks)
    : image_(VORN_L_ImageVaCreateHandle(0, MTAG_ModuleType, VORN_Word(type), TAG_End)),
      callbacks_(std::move(callbacks)) {
    vorn::SharedStuffCreate(*image_, type);
    thread_ = std::thread(&Twin::runModule, this, commandLineFor(image_->stuff));
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
    vorn::SharedStuffClose(*image_);
    VORN_L_ImageDestroyHandle(image_);
}

void Twin::runModule(std::vector<std::string> words) {
    current = &callbacks_;
    callsOfCurrent = &calls_;
    registerAll(callbacks_);
    VORN_M_SetVaModuleTags(SHTAG_Version, VORN_Word(VORN_PROTOCOL_VERSION), SHTAG_End);
    if (callbacks_.beforeTheShell) callbacks_.beforeTheShell();
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
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
    send(CMD_Terminate);
    EXPECT_EQ(receive(), Bytes());
    thread_.join();
}

Bytes acknowledgementOf(int32_t round, int32_t version) {
    return MessageBytes().number(MTAG_Ack, round).number(MTAG_Version, version).end();
}

Bytes acknowledgementWithError(int32_t round, int32_t code, int32_t subcode) {
    return MessageBytes()
        .number(MTAG_Ack, round)
        .error(code, subcode)
        .number(MTAG_Version, VORN_PROTOCOL_VERSION)
        .end();
}

Bytes emptyMessage() { return MessageBytes().end(); }

Bytes errorMessage(int32_t code, int32_t subcode) {
    return MessageBytes().error(code, subcode).end();
}

Bytes interrupt() {
    return MessageBytes().item(TAG_Interrupt, 8).number(MTAG_Command, CMD_Abort).end();
}
