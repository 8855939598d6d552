// A second program at the other end of a connection, without a module's shell around it.
#pragma once

#include <sys/types.h>
#include <vorn/library.h>

#include <functional>

#include "transport/image.h"

namespace vorn_bench {

// Runs the work in a child program, and waits for the child's end.
class PeerProcess {
  public:
    explicit PeerProcess(const std::function<void()>& work);
    ~PeerProcess();
    PeerProcess(const PeerProcess&) = delete;
    PeerProcess& operator=(const PeerProcess&) = delete;

    int watch() const { return watch_; }  // readable when the child has ended

  private:
    pid_t id_;
    int watch_;
};

// A host's connection of the library's own, and a child that holds the module's end of it.
class Connection {
  public:
    Connection(int32_t moduleType, const std::function<void(SharedStuff&)>& module);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    SharedStuff& host() { return image_->stuff; }

  private:
    void attach(const std::function<void(SharedStuff&)>& module);

    VORN_Image* image_;
    PeerProcess peer_;
};

// All that this program and its children do happens on one processor as long as the object lives.
class OneProcessor {
  public:
    OneProcessor();
    ~OneProcessor();

  private:
    unsigned char before_[128];
};

}  // namespace vorn_bench
