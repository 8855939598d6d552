// Runs a piece of a test again and again, with the first allocation failing, then the second, and
// so on until it ends without a failure.
#pragma once

#include <utility>

#include "support/memory.h"

// `action` gets a function that runs a call with the failure armed and answers {the call's result,
// whether it failed}.
template <class Action>
void failAtEachAllocation(Action action) {
    bool failed = true;
    for (unsigned n = 1; failed; ++n) {
        failed = false;
        action([&](auto call) {
            vorn::failAllocation(n);
            auto result = call();
            failed = vorn::failAllocation(0) >= n;
            return std::pair(result, failed);
        });
    }
}
