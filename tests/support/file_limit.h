#pragma once

#include <sys/resource.h>

#include <csignal>

// A disk without room: no file may become longer than this.
class FileLimit {
  public:
    explicit FileLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileLimit() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

  private:
    void (*handler_)(int);
    rlimit before_{};
};
