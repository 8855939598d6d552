// Programs that a test runs, with what they write and how they end.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

using Arguments = std::vector<std::string>;

inline Arguments joined(Arguments arguments, const Arguments& more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

struct Ended {
    int status = 0;  // the exit status, or 128 + the signal that ended it
    std::string out;
    std::string err;
};

struct ProgramOptions {
    // NAME=VALUE. Without `cleanEnvironment` they are added to this program's environment.
    std::vector<std::string> environment = {};
    bool cleanEnvironment = false;
    // Standard error is a terminal of 100 columns.
    bool errorIsTerminal = false;
};

// A running program, leader of a process group of its own. Its standard input is empty.
class Program {
  public:
    explicit Program(const std::vector<std::string>& command, const ProgramOptions& options = {});
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // Sends a signal to the program and all that belongs to its group, as a terminal does.
    void signal(int number) const;

    // Waits for the end.
    Ended wait();

  private:
    pid_t id_ = -1;
    int out_ = -1;
    int err_ = -1;
    bool errorIsTerminal_;
};

Ended run(const std::vector<std::string>& command, const ProgramOptions& options = {});
