#include "transport/os_layer.h"

#include <vorn/support.h>

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

void firstPost(SemaphoreSet& set, uint32_t entry) {
    const auto chosen = osLayer().semPost;
    postRoutine = chosen;
    chosen(set, entry);
}

}  // namespace

std::atomic<decltype(OsLayer::semWait)> waitRoutine{firstWait};
std::atomic<decltype(OsLayer::semTryWait)> tryWaitRoutine{firstTryWait};
std::atomic<decltype(OsLayer::semPost)> postRoutine{firstPost};

const OsLayer& osLayer() { return OSEqualWin162() ? kGlobalBlocks : kKernelObjects; }

}  // namespace vorn
