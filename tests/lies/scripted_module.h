// A module without a program: a script that is played, a step at a time, whenever the host has to
// wait. It runs on the host's own thread, so every run of a script is the same run and takes
// microseconds. The transfer areas are blocks of their own on the heap, as large as the test says,
// so the address sanitizer sees every access beyond an edge.
//
// A program that holds a ScriptedModule is linked without the library's own choice of an
// operating-system layer: its semaphores are the script's counts.
#pragma once

#include <vorn/host.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "tests/support/message_bytes.h"
#include "transport/image.h"

struct ScriptStep {
    bool takes = false;  // waits for a message of the host and takes it
    Bytes message = {};  // else: waits until the last one was taken and sends this one
};

class ScriptedModule {
  public:
    // `areaSize` bytes hold the module's messages; what is longer is cut. An eager module runs
    // ahead of the host as far as it can, any other works only while the host waits. Behind the
    // last step, or when nobody can go on, the module's program counts as ended.
    ScriptedModule(int32_t type, std::vector<ScriptStep> steps, uint32_t areaSize, bool eager);
    ~ScriptedModule();
    ScriptedModule(const ScriptedModule&) = delete;
    ScriptedModule& operator=(const ScriptedModule&) = delete;

    // Connected as after the start of a program, whose first acknowledgement is owed.
    VORN_Image* image() const { return image_; }
    int32_t errorCode() const { return image_->errors.error.code; }

    // The area as it was each time when the host took a message.
    const std::vector<Bytes>& heard() const { return heard_; }
    // The host's messages that the script took, with what lies behind them, as far as 8 KiB.
    const std::vector<Bytes>& taken() const { return taken_; }

    // The layer's primitives.
    bool wait(uint32_t entry);
    bool tryWait(uint32_t entry);
    void post(uint32_t entry);

  private:
    bool step();
    bool take(uint32_t entry);

    VORN_Image* image_;
    std::vector<ScriptStep> steps_;
    size_t next_ = 0;
    bool eager_;
    uint32_t counts_[vorn::kSemaphoreCount] = {};
    std::unique_ptr<uint8_t[]> readArea_;
    std::unique_ptr<uint8_t[]> writeArea_;
    std::vector<Bytes> heard_;
    std::vector<Bytes> taken_;
};
