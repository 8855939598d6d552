#include "tests/conversation/traces.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "platform/thread_messages.h"

namespace fs = std::filesystem;

namespace {

// Numbers and what they stand for: a descriptor that was closed and opened anew is seen too.
std::set<std::string> openDescriptors() {
    std::set<std::string> all;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = fs::read_symlink(entry.path(), error).string();
        if (!error && target.rfind("/proc/", 0) != 0)
            all.insert(entry.path().filename().string() + " " + target);
    }
    return all;
}

// Shared memory of ours that this program sees.
std::multiset<std::string> sharedMappings() {
    std::multiset<std::string> all;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        const size_t name = line.find("/memfd:vorn");
        if (name != std::string::npos) all.insert(line.substr(name));
    }
    return all;
}

}  // namespace

void awaitEnd(int watch) {
    pollfd wait{watch, POLLIN, 0};
    while (::poll(&wait, 1, -1) < 0 && errno == EINTR) {
    }
    EXPECT_NE(wait.revents & POLLIN, 0);
    ::close(watch);
}

int watchProgram(int id) { return static_cast<int>(::syscall(SYS_pidfd_open, id, 0u)); }

bool hasChildren() {
    for (const auto& task : fs::directory_iterator("/proc/self/task")) {
        std::string children;
        std::getline(std::ifstream(task.path() / "children"), children);
        if (!children.empty()) return true;
    }
    return ::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT | __WALL) == 0 ||
           errno != ECHILD;
}

void awaitProgramsIn(const std::string& directory) {
    for (const auto& entry : fs::directory_iterator("/proc")) {
        std::error_code error;
        const std::string program = fs::read_symlink(entry.path() / "exe", error).string();
        if (error || program.rfind(directory, 0) != 0) continue;
        const int watch = watchProgram(std::stoi(entry.path().filename()));
        if (watch >= 0) awaitEnd(watch);
    }
}

void NothingStays::SetUp() {
    vorn::platform::ThreadMessage message;
    vorn::platform::peekThreadMessage(message);  // a thread's queue stays as long as the thread
    descriptors_ = openDescriptors();
}

void NothingStays::TearDown() {
    EXPECT_FALSE(hasChildren());
    EXPECT_EQ(openDescriptors(), descriptors_);
    EXPECT_EQ(sharedMappings(), std::multiset<std::string>());
}
