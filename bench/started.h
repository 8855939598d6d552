// Programs that a benchmark starts and measures.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace vorn_bench {

// Starts a program; ends this one when it can't be started.
pid_t start(const std::vector<std::string>& command);

struct Spent {
    double wall = 0;  // seconds
    double cpu = 0;   // of the program and of all that it has started, user and system
};

// Runs a program to its end, and what it has started, too. Ends this one when it fails.
Spent run(const std::vector<std::string>& command);

}  // namespace vorn_bench
