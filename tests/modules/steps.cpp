#include "tests/modules/steps.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "transport/os_layer.h"

// The linker hands every call of vorn::osLayer to the second of these (--wrap).
const vorn::OsLayer& realLayer() asm("__real__ZN4vorn7osLayerEv");
const vorn::OsLayer& countingLayer() asm("__wrap__ZN4vorn7osLayerEv");

namespace {

constexpr int kExitStatus = 7;
constexpr int kShortLife = 20;  // milliseconds
constexpr int kLongLife = 400;  // time enough to see that the host waits without working

struct Order {
    Order() {
        const char* text = std::getenv(STEP_VARIABLE);
        char name[32] = "";
        if (text && std::sscanf(text, "%31s %d", name, &step) == 2) action = name;
    }
    std::string action;
    int step = 0;
};

const Order& order() {
    static const Order theOne;
    return theOne;
}

void tell(const char* operation, uint32_t entry) {
    StepNews news{};
    std::snprintf(news.description, sizeof news.description, "%s %u", operation, entry);
    news.time = std::chrono::steady_clock::now().time_since_epoch().count();
    const char* path = std::getenv("VORN_TEST_PIPE");
    const int pipe = path ? ::open(path, O_WRONLY | O_CLOEXEC) : -1;
    if (pipe >= 0 && ::write(pipe, &news, sizeof news) != sizeof news) std::_Exit(kExitStatus);
    ::close(pipe);
}

// ---- what this program holds ----

constexpr char kSemaphore[] = "anon_inode:[eventfd]";
constexpr char kBlock[] = "memfd:vorn";

// All descriptors of this kind but the standard streams.
void forEachHeld(const char* kind, const std::function<void(int)>& action) {
    std::vector<int> numbers;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string what = std::filesystem::read_symlink(entry.path(), error);
        if (!error && what.find("/fd") == std::string::npos && what.find(kind) != std::string::npos)
            numbers.push_back(std::stoi(entry.path().filename()));
    }
    for (const int number : numbers)
        if (number > STDERR_FILENO) action(number);
}

// Memory that this program shares with its host.
struct Area {
    uint8_t* bytes;
    size_t size;
    // Where the system has no kernel objects, the counters have a block of their own; else they lie
    // behind the areas.
    uint8_t* counter(int i) const {
        if (size < vorn::kSharedAreaSize) return bytes + i;
        auto* counts = reinterpret_cast<vorn::SharedCounts*>(bytes + vorn::kSharedAreaSize);
        return size == vorn::kSharedAreaSize ? nullptr
                                             : reinterpret_cast<uint8_t*>(&counts->entry[i].count);
    }
};

std::vector<Area> areas() {
    std::vector<Area> all;
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        uintptr_t from = 0, to = 0;
        const bool shared = line.find("/memfd:vorn") != std::string::npos;
        if (shared && std::sscanf(line.c_str(), "%" SCNxPTR "-%" SCNxPTR, &from, &to) == 2)
            all.push_back({reinterpret_cast<uint8_t*>(from), to - from});
    }
    return all;
}

// A semaphore is a descriptor, and a counter, of which the lowest byte is told.
void forEachSemaphore(const std::function<void(int)>& action,
                      const std::function<void(uint8_t&)>& counterAction) {
    forEachHeld(kSemaphore, action);
    for (const Area& area : areas())
        for (int i = 0; i < vorn::kSemaphoreCount; ++i)
            if (uint8_t* counter = area.counter(i)) counterAction(*counter);
}

// Also blocks that this program has inherited and not mapped yet.
void fillBlocks(const std::function<uint8_t()>& next) {
    const auto fill = [&](uint8_t* bytes, size_t size) { std::generate_n(bytes, size, next); };
    forEachHeld(kBlock, [&](int block) {
        const auto size = static_cast<size_t>(::lseek(block, 0, SEEK_END));
        void* area = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, block, 0);
        fill(static_cast<uint8_t*>(area), size);
        ::munmap(area, size);
    });
    for (const Area& area : areas()) fill(area.bytes, area.size);
}

void post(int semaphore, uint64_t count) {
    if (::write(semaphore, &count, sizeof count) < 0) return;  // it is full already
}

void fillSemaphores() {
    forEachSemaphore([](int number) { post(number, UINT64_MAX - 1); },
                     [](uint8_t& counter) { counter = UINT8_MAX; });
}

// ---- what can be done ----

void endBySignal(int number) {
    std::signal(number, SIG_DFL);  // no report of a sanitizer
    std::raise(number);
}

// Nothing more as long as there is a host.
[[noreturn]] void sleep() {
    const char* host = std::getenv("VORN_HOST");
    pollfd hostsEnd{host ? std::atoi(host) : -1, POLLIN, 0};
    while (::poll(&hostsEnd, 1, -1) < 0) {
    }
    std::_Exit(kExitStatus);
}

// Also when there is no host any more.
[[noreturn]] void hang() {
    for (;;) ::pause();
}

// What a program does that needs some time after it has heard of its host's end.
void tidyUp() {
    std::raise(SIGIO);
    tell("tidy", 0);
}

// What goes wrong from here on ends with the program's life, which is short.
void dieSoon(int milliseconds) {
    std::signal(SIGALRM, SIG_DFL);
    const itimerval timer{{0, 0}, {0, milliseconds * 1000}};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

void scribbleRandom() {
    std::minstd_rand random(static_cast<unsigned>(order().step));
    fillBlocks([&] { return static_cast<uint8_t>(random() >> 8); });
}

// Everything that could take a block from under the host.
void shrinkBlocks() {
    forEachHeld(kBlock, [](int block) {
        if (::ftruncate(block, 0) == 0 || ::ftruncate(block, 4096) == 0) std::_Exit(kExitStatus);
        ::fcntl(block, F_ADD_SEALS, F_SEAL_WRITE);
        ::fallocate(block, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, vorn::kSharedAreaSize);
    });
    for (const Area& area : areas()) ::madvise(area.bytes, area.size, MADV_REMOVE);
}

void makeSemaphoresBlocking() {
    forEachSemaphore([](int number) { ::fcntl(number, F_SETFL, 0); }, [](uint8_t&) {});
}

void takeAll() {
    forEachSemaphore(
        [](int number) {
            while (vorn::platform::tryWaitSemaphore(number)) {
            }
        },
        [](uint8_t& counter) { counter = 0; });
}

void postAll() {
    forEachSemaphore([](int number) { post(number, 1); }, [](uint8_t& counter) { ++counter; });
}

void closeAll() {
    forEachHeld("", [](int number) { ::close(number); });
}

// The child keeps all that it has inherited until the test lets go of the leash.
void leaveChild() {
    if (::fork() != 0) return;
    ::setsid();
    char word = 0;
    const ssize_t got = ::read(::open(std::getenv("VORN_TEST_LEASH"), O_RDONLY), &word, 1);
    std::_Exit(got == 1 ? 0 : kExitStatus);
}

void endMainThread() {
    std::thread([] { sleep(); }).detach();
    ::syscall(SYS_exit, 0);
}

void forkAndExit() {
    leaveChild();
    std::_Exit(0);
}

void fillAndDie() {
    fillSemaphores();
    std::raise(SIGKILL);
}

void fillAndSleep() {
    dieSoon(kLongLife);
    fillSemaphores();
    sleep();
}

// As a program without any care does it; the report of the language's runtime is not wanted.
void allocate() {
    std::set_terminate([] { std::abort(); });
    for (;;) {
        char* volatile kept = new char[1 << 22];  // volatile: the compiler may not leave it out
        *kept = 1;
    }
}

void spin() {
    for (volatile bool on = true; on;) {
    }
}

// What is done, and whether it is a mischief that the program doesn't survive for long.
struct Action {
    std::function<void()> act;
    bool mischief = false;
};

const std::map<std::string, Action>& actions() {
    static const std::map<std::string, Action> kActions = {
        {"tell", {[] {}}},
        {"kill", {[] { std::raise(SIGKILL); }}},
        {"segv", {[] { endBySignal(SIGSEGV); }}},
        {"abort", {[] { endBySignal(SIGABRT); }}},
        {"exit0", {[] { std::_Exit(0); }}},
        {"exit7", {[] { std::_Exit(kExitStatus); }}},
        {"sleep", {sleep}},
        {"stop", {[] { std::raise(SIGSTOP); }}},
        {"endthread", {endMainThread}},
        {"hang", {hang}},
        {"hanglast", {[] { std::atexit(hang); }}},
        {"tidylast", {[] { std::atexit(tidyUp); }}},
        {"stoplast", {[] { std::atexit([] { std::raise(SIGSTOP); }); }}},
        {"spin", {spin}},
        {"allocate", {allocate}},
        {"zeros", {[] { fillBlocks([] { return uint8_t{0}; }); }, true}},
        {"ones", {[] { fillBlocks([] { return uint8_t{0xFF}; }); }, true}},
        {"random", {scribbleRandom, true}},
        {"shrink", {shrinkBlocks, true}},
        {"blocking", {makeSemaphoresBlocking}},
        {"take", {takeAll, true}},
        {"post", {postAll, true}},
        {"fill", {fillSemaphores, true}},
        {"fillkill", {fillAndDie}},
        {"fillsleep", {fillAndSleep}},
        {"close", {closeAll, true}},
        {"fork", {leaveChild}},
        {"forkexit", {forkAndExit}},
        {"leaveout", {[] {}, true}},
    };
    return kActions;
}

// ---- counting ----

struct Count {
    int steps = 0;
    int hookStep = 0;
    std::function<void()> hook;
};

Count& theCount() {
    static Count theOne;
    return theOne;
}

// True when the operation itself is to be left out.
bool step(const char* operation, uint32_t entry) {
    Count& count = theCount();
    ++count.steps;
    if (count.hook && count.steps == count.hookStep) count.hook();
    if (count.steps != order().step) return false;
    tell(operation, entry);
    const Action& action = actions().at(order().action);
    if (action.mischief) dieSoon(kShortLife);
    action.act();
    return order().action == "leaveout";
}

bool wait(vorn::SemaphoreSet& set, uint32_t entry) {
    if (step("wait", entry)) return true;
    const bool taken = realLayer().semWait(set, entry);
    if (taken) step("taken", entry);
    return taken;
}

bool tryWait(vorn::SemaphoreSet& set, uint32_t entry) {
    if (step("look", entry)) return true;
    const bool taken = realLayer().semTryWait(set, entry);
    if (taken) step("found", entry);
    return taken;
}

}  // namespace

void atStep(int step, std::function<void()> hook) { theCount() = {0, step, std::move(hook)}; }

const vorn::OsLayer& countingLayer() {
    static const vorn::OsLayer layer = [] {
        vorn::OsLayer changed = realLayer();
        changed.shmCreate = [](uint32_t size, vorn::ShmDescriptor& shm) {
            step("create", 0);
            return realLayer().shmCreate(size, shm);
        };
        changed.semCreateSet = [] {
            step("create", 1);
            return realLayer().semCreateSet();
        };
        changed.shmOpen = [](vorn::ShmDescriptor& shm) {
            step("start", 0);
            return realLayer().shmOpen(shm);
        };
        changed.semWait = wait;
        changed.semTryWait = tryWait;
        changed.semPost = [](vorn::SemaphoreSet& set, uint32_t entry) {
            return step("post", entry) || realLayer().semPost(set, entry);
        };
        return changed;
    }();
    return layer;
}
