// A module that a picture goes through: with the file that it reads or writes, watched by
// interrupts, and brought to an orderly end when the transfer fails on this side or the other.
#pragma once

#include <vorn/host.h>

#include <string>

#include "tools/handle.h"
#include "tools/interrupts.h"

namespace vorn::tool {

class Connection {
  public:
    Connection(const std::string& module,
               int32_t type,
               std::string file,
               const Limits& limits,
               Interrupts& interrupts);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    VORN_Image* image() const { return handle_.get(); }
    const std::string& file() const { return file_; }
    Interrupts& interrupts() const { return interrupts_; }

    // Between the two, lines are on their way: an end before `endLines` makes the module drop what
    // it has begun.
    void beginLines() { moving_ = true; }
    void endLines() { moving_ = false; }

    // Throws the reason for which the module can't go on.
    [[noreturn]] void fail();

  private:
    void abandonLines();

    std::string file_;
    Interrupts& interrupts_;
    Handle handle_;
    Interrupts::Watch watch_;
    bool moving_ = false;
};

}  // namespace vorn::tool
