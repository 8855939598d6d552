// A program that does what its first argument says. The second is the number of a socket that it
// inherits and speaks through.
#include <dirent.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "platform/connection.h"
#include "platform/limits.h"
#include "platform/process.h"

namespace {

using namespace vorn;

int talk = -1;

void say(const std::string& line) {
    const std::string text = line + "\n";
    if (::write(talk, text.data(), text.size()) < 0) std::exit(3);
}

// Until the other end says something or is gone.
void waitForWord() {
    char byte = 0;
    if (::read(talk, &byte, 1) <= 0) std::exit(4);
}

void tellDescriptors() {
    std::string list;
    int pipes = 0;
    DIR* stream = ::opendir("/proc/self/fd");
    for (const dirent* entry = ::readdir(stream); entry; entry = ::readdir(stream)) {
        const std::string name = entry->d_name;
        if (name[0] == '.' || name == std::to_string(::dirfd(stream))) continue;
        char target[256];
        const auto length = ::readlink(("/proc/self/fd/" + name).c_str(), target, sizeof target);
        const std::string what(target, static_cast<size_t>(length));
        const bool isPipe = what.starts_with("pipe:") && name != "2";
        pipes += isPipe;
        if (!isPipe) list += " " + name + (what == "/dev/null" ? "(empty)" : "");
    }
    ::closedir(stream);
    say("descriptors" + list + ", pipes " + std::to_string(pipes));
}

void tellStatus() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigBlk") || line.starts_with("SigIgn")) say(line);
    }
    for (const char* name : {"VORN_HOST", "MALLOC_ARENA_MAX", "OF_THE_HOST"}) {
        const char* value = std::getenv(name);
        say(std::string(name) + "=" + (value ? value : "none"));
    }
    const auto tellLimit = [](const char* name, auto resource) {
        rlimit limit{};
        ::getrlimit(resource, &limit);
        say(std::string(name) + " " + std::to_string(limit.rlim_cur));
    };
    tellLimit("core", RLIMIT_CORE);
    tellLimit("memory", RLIMIT_AS);
    tellLimit("time", RLIMIT_CPU);
}

// Waits for the end of the host.
void watch() {
    int32_t host = -1;
    if (!platform::watchHost(0, host)) say("no host");
    say("watching");
    platform::WaitHistory history;
    platform::waitSemaphore(platform::createSemaphore(), host, platform::kNoDescriptor, history);
    say("host ended");
}

// Hears of its host's end, and hangs.
void hearOfEnd() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGIO);
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
    platform::endWithHost();
    say("ready");
    ::sigemptyset(&signals);
    ::sigsuspend(&signals);
    say("told");
    for (;;) ::pause();
}

void reserve(const char* name) {
    int32_t reservation = -1;
    const bool done = platform::reserveName(name, reservation) == platform::Reservation::Reserved;
    say(done ? "reserved" : "not reserved");
    waitForWord();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const std::string action = argv[0];
    talk = std::atoi(argv[1]);
    if (action == "tell") {
        tellDescriptors();
        tellStatus();
        say("end");
    } else if (action == "answer") {
        waitForWord();
        say("here");
    } else if (action == "post") {
        for (int i = 0; i < 2; ++i) platform::postSemaphore(std::atoi(argv[2]));
    } else if (action == "reserve") {
        reserve(argv[2]);
    } else if (action == "hear") {
        hearOfEnd();
    } else if (action == "watch") {
        watch();
    }
    return 0;
}
