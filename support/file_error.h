// What BGetErrorCode answers.
#pragma once

#include <cstdint>

#include "support/thread_state.h"

namespace vorn {

struct FileErrorState {
    int32_t error = 0;
};

// The calling thread's.
inline int32_t& lastFileError() { return threadState<FileErrorState>().error; }

}  // namespace vorn
