#include "tests/module/twin.h"

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

using Message = const VORN_TagItem*;

void registerAll(const Callbacks& c) {
    const auto add = [](uint32_t id, bool wanted, auto* function) {
        if (wanted) VORN_M_SetVaModuleTags(id, reinterpret_cast<VORN_Word>(function), SHTAG_End);
    };
    using C = Callbacks;
    add(
        SHTAG_Close, !!c.close, +[] { call("close", &C::close); });
    add(
        SHTAG_LoaderOpen, !!c.loaderOpen,
        +[](Message m) { return call("open", &C::loaderOpen, m); });
    add(
        SHTAG_LoaderBegin, !!c.loaderBegin, +[] { return call("begin", &C::loaderBegin); });
    add(
        SHTAG_LoaderRead, !!c.loaderRead, +[] { call("read", &C::loaderRead); });
    add(
        SHTAG_SaverOpen, !!c.saverOpen, +[](Message m) { return call("open", &C::saverOpen, m); });
    add(
        SHTAG_SaverBegin, !!c.saverBegin, +[] { return call("begin", &C::saverBegin); });
    add(
        SHTAG_SaverWrite, !!c.saverWrite, +[] { return call("write", &C::saverWrite); });
    add(
        SHTAG_SaverQuery, !!c.saverQuery, +[] { call("query", &C::saverQuery); });
    add(
        SHTAG_Command, !!c.command, +[](Message m) { call("command", &C::command, m); });
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
    vorn::SharedStuffClose(*image_);
    VORN_L_ImageDestroyHandle(image_);
}

void Twin::runModule(std::vector<std::string> words) {
    current = &callbacks_;
    callsOfCurrent = &calls_;
    registerAll(callbacks_);
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
    return calls;
}

Bytes command(uint32_t number) {
    return MessageBytes().number(MTAG_Command, static_cast<int32_t>(number)).end();
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
