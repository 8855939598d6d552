#include "peer_process.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/process.h"
#include "transport/attach.h"
#include "transport/connection.h"

namespace vorn_bench {
namespace {

int watchOf(pid_t id) { return static_cast<int>(::syscall(SYS_pidfd_open, id, 0)); }

VORN_Image* openEnd(int32_t moduleType) {
    VORN_Image* image =
        VORN_L_ImageVaCreateHandle(0, MTAG_ModuleType, VORN_Word(moduleType), TAG_End);
    if (!image || !vorn::SharedStuffCreate(*image, moduleType)) std::abort();
    return image;
}

std::vector<std::string> commandLine(const SharedStuff& host) {
    std::vector<std::string> words = {std::to_string(host.shm.handle), host.shm.name};
    for (const auto& entry : host.semaphores->entry) {
        words.push_back(std::to_string(entry.handle));
        words.push_back(entry.name);
    }
    for (const int32_t number : {host.writeOffset, host.writeSize, host.readOffset, host.readSize,
                                 static_cast<int32_t>(::getppid())})
        words.push_back(std::to_string(number));
    return words;
}

}  // namespace

PeerProcess::PeerProcess(const std::function<void()>& work) : id_(::fork()), watch_(-1) {
    if (id_ == 0) {
        work();
        ::_exit(0);
    }
    watch_ = watchOf(id_);
}

PeerProcess::~PeerProcess() {
    ::waitpid(id_, nullptr, 0);
    ::close(watch_);
}

Connection::Connection(int32_t moduleType, const std::function<void(SharedStuff&)>& module)
    : image_(openEnd(moduleType)), peer_([&] { attach(module); }) {
    host().semaphores->watched = peer_.watch();
}

Connection::~Connection() {
    vorn::SharedStuffClose(*image_);
    VORN_L_ImageDestroyHandle(image_);
}

void Connection::attach(const std::function<void(SharedStuff&)>& module) {
    ::setenv("VORN_HOST", std::to_string(watchOf(::getppid())).c_str(), 1);
    SharedStuff stuff{};
    stuff.waitBeforeWrite = 3;
    stuff.postAfterWrite = 2;
    stuff.waitBeforeRead = 1;
    stuff.postAfterRead = 0;
    std::vector<std::string> words = commandLine(host());
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    if (!vorn::SharedStuffAttach(stuff, static_cast<int>(arguments.size()), arguments.data()))
        std::abort();
    module(stuff);
}

OneProcessor::OneProcessor() {
    cpu_set_t set;
    static_assert(sizeof set <= sizeof before_);
    ::sched_getaffinity(0, sizeof set, &set);
    std::memcpy(before_, &set, sizeof set);
    int processor = 0;
    while (!CPU_ISSET(processor, &set)) ++processor;
    CPU_ZERO(&set);
    CPU_SET(processor, &set);
    ::sched_setaffinity(0, sizeof set, &set);
}

OneProcessor::~OneProcessor() {
    cpu_set_t set;
    std::memcpy(&set, before_, sizeof set);
    ::sched_setaffinity(0, sizeof set, &set);
}

}  // namespace vorn_bench
