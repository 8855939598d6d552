// The threads that libjxl works with: as many as a picture of its size keeps busy.
#pragma once

#include <jxl/resizable_parallel_runner.h>

#include <memory>

#include "formats/common/failure.h"

namespace jxl_format {

class Threads {
  public:
    Threads() : runner_(JxlResizableParallelRunnerCreate(nullptr)) {
        if (!runner_) throw formats::Failure{formats::kOutOfMemory};
    }

    void setFor(uint64_t width, uint64_t height) const {
        JxlResizableParallelRunnerSetThreads(
            runner_.get(), JxlResizableParallelRunnerSuggestThreads(width, height));
    }
    void* get() const { return runner_.get(); }

  private:
    struct Releaser {
        void operator()(void* runner) const { JxlResizableParallelRunnerDestroy(runner); }
    };
    std::unique_ptr<void, Releaser> runner_;
};

}  // namespace jxl_format
