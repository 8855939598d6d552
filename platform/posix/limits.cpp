#include "platform/limits.h"

#include <signal.h>
#include <sys/resource.h>

#include <atomic>
#include <new>

#include "platform/connection.h"

namespace vorn::platform {
namespace {

// Limits are a program's, and a signal may come to any of its threads.
std::atomic<int32_t> told{kNoDescriptor};
std::atomic<bool (*)(int32_t)> postOnce{nullptr};
std::atomic<bool> memoryTold{false};

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
    struct sigaction present {};
    const bool unset =
        ::sigaction(SIGXCPU, nullptr, &present) == 0 && present.sa_handler == SIG_DFL;
    if (unset && isLimited(RLIMIT_CPU)) {
        struct sigaction action {};
        action.sa_handler = timeIsUp;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
        ::sigaction(SIGXCPU, &action, nullptr);
    }
    if (isLimited(RLIMIT_AS) && !std::get_new_handler()) std::set_new_handler(memoryIsShort);
}

}  // namespace vorn::platform
