#include "tools/interrupts.h"

#include <signal.h>
#include <vorn/library.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <thread>

namespace vorn::tool {

// A thread that takes the signals out of the process's queue while they are blocked everywhere: no
// signal handler runs, so nothing is interrupted half-way.
struct Interrupts::Listener {
    explicit Listener(Interrupts& interrupts);
    ~Listener();

    sigset_t signals;
    sigset_t maskBefore;
    std::atomic<bool> ending = false;
    std::thread thread;
};

namespace {

constexpr timespec kPatience{1, 0};

// A signal that the caller of this program has set to be ignored stays ignored.
void addUnlessIgnored(sigset_t& signals, int number) {
    struct sigaction action {};
    if (sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
        sigaddset(&signals, number);
    }
}

}  // namespace

Interrupts::Listener::Listener(Interrupts& interrupts) {
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    addUnlessIgnored(signals, SIGINT);
    addUnlessIgnored(signals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &signals, &maskBefore);
    thread = std::thread([this, &interrupts] {
        while (!ending) {
            const int number = interrupts.requested() ? sigtimedwait(&signals, nullptr, &kPatience)
                                                      : sigwaitinfo(&signals, nullptr);
            if (ending) return;
            if (number > 0) interrupts.received();
            if (number < 0 && errno == EAGAIN) interrupts.waitedInVain();
        }
    });
}

Interrupts::Listener::~Listener() {
    ending = true;
    pthread_kill(thread.native_handle(), SIGTERM);
    thread.join();
    pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
}

Interrupts::Interrupts() : listener_(std::make_unique<Listener>(*this)) {}

Interrupts::~Interrupts() = default;

void Interrupts::received() {
    const int count = ++count_;
    if (count > 2) std::_Exit(EXIT_FAILURE);
    if (count == 2) stopWatched();
}

// Also again and again: a stop that comes while no call uses the image is of no effect.
void Interrupts::waitedInVain() {
    if (count_ == 1) ++count_;
    stopWatched();
}

void Interrupts::stopWatched() {
    const std::lock_guard lock(mutex_);
    std::ranges::for_each(watched_, VORN_L_ShutDownHandle);
}

Interrupts::Watch::Watch(Interrupts& interrupts, VORN_Image* image)
    : interrupts_(interrupts), image_(image) {
    const std::lock_guard lock(interrupts_.mutex_);
    interrupts_.watched_.push_back(image);
}

Interrupts::Watch::~Watch() {
    const std::lock_guard lock(interrupts_.mutex_);
    std::erase(interrupts_.watched_, image_);
}

}  // namespace vorn::tool
