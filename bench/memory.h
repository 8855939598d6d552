// The memory of the tool and of the modules that it starts.
#pragma once

#include <string>
#include <vector>

namespace vorn_bench {

// Runs the tool and prints the most memory that it took in each program, and in all of them at one
// time: each program's proportional share (PSS), looked at again and again.
void printMemory(const std::string& name, const std::vector<std::string>& command);

}  // namespace vorn_bench
