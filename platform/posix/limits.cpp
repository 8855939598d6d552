#include "platform/limits.h"

#include <signal.h>
#include <sys/resource.h>
#include <time.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "platform/connection.h"
#include "platform/process.h"

namespace vorn::platform {
namespace {

// Limits are a program's, and a signal may come to any of its threads.
std::atomic<int32_t> told{kNoDescriptor};
std::atomic<bool (*)(int32_t)> postOnce{nullptr};
std::atomic<bool> memoryTold{false};
std::atomic<timer_t> ending{};

void post(int32_t count) {
    for (; count > 0; --count) postOnce.load()(told);
}

// The standard action, which ends the program, is in force again.
void timeIsUp(int number) {
    post(kTimeLimitPosts);
    ::raise(number);
}

// Returns for one more try, after which the failure takes its usual course.
void memoryIsShort() {
    std::set_new_handler(nullptr);
    tellMemoryLimit();
}

void hostIsGone(int) {
    const itimerspec last{{0, 0}, {kLastMilliseconds / 1000, kLastMilliseconds % 1000 * 1'000'000}};
    ::timer_settime(ending, 0, &last, nullptr);
}

// Takes the signal where the program has arranged nothing for it.
void handle(int signal, void (*handler)(int), int flags) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) return;
    action.sa_handler = handler;
    action.sa_flags = flags;
    ::sigaction(signal, &action, nullptr);
}

bool isLimited(int resource) {
    rlimit limit{};
    return ::getrlimit(static_cast<__rlimit_resource>(resource), &limit) == 0 &&
           limit.rlim_cur != RLIM_INFINITY;
}

}  // namespace

void tellMemoryLimit() {
    if (told != kNoDescriptor && isLimited(RLIMIT_AS) && !memoryTold.exchange(true))
        post(kMemoryLimitPosts);
}

void tellLimits(int32_t semaphore, bool (*post)(int32_t semaphore)) {
    postOnce = post;
    told = semaphore;
    if (isLimited(RLIMIT_CPU))
        handle(SIGXCPU, timeIsUp, static_cast<int>(SA_RESETHAND | SA_NODEFER));
    if (isLimited(RLIMIT_AS) && !std::get_new_handler()) std::set_new_handler(memoryIsShort);
}

// The timer is the system's: no thread, and nothing that the program could be too busy for.
// Without one the signal ends the program at once.
void endWithHost() {
    if (!std::getenv("VORN_HOST")) return;
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGKILL;
    timer_t timer{};
    if (::timer_create(CLOCK_MONOTONIC, &event, &timer) != 0) return;
    ending = timer;
    handle(SIGIO, hostIsGone, SA_RESTART);
}

}  // namespace vorn::platform
