// The first wait and the first post of a program choose for all later ones.
#include "transport/os_layer.h"

namespace vorn {
namespace {

bool firstWait(SemaphoreSet& set, uint32_t entry) {
    const auto chosen = osLayer().semWait;
    waitRoutine = chosen;
    return chosen(set, entry);
}

bool firstTryWait(SemaphoreSet& set, uint32_t entry) {
    const auto chosen = osLayer().semTryWait;
    tryWaitRoutine = chosen;
    return chosen(set, entry);
}

bool firstPost(SemaphoreSet& set, uint32_t entry) {
    const auto chosen = osLayer().semPost;
    postRoutine = chosen;
    return chosen(set, entry);
}

}  // namespace

std::atomic<decltype(OsLayer::semWait)> waitRoutine{firstWait};
std::atomic<decltype(OsLayer::semTryWait)> tryWaitRoutine{firstTryWait};
std::atomic<decltype(OsLayer::semPost)> postRoutine{firstPost};

}  // namespace vorn
