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
    rlimit core{};
    ::getrlimit(RLIMIT_CORE, &core);
    say("core " + std::to_string(core.rlim_cur));
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

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const std::string action = argv[0];
    talk = std::atoi(argv[1]);
    if (action == "tell") {
        tellDescriptors();
        tellStatus();
    } else if (action == "answer") {
        waitForWord();
        say("here");
    } else if (action == "hear") {
        hearOfEnd();
    }
    return 0;
}
