// The same work done by several contestants, which take turns so that what else the machine does
// meets all of them.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vorn_bench {

struct Contestant {
    std::string name;
    std::function<double()> turn;  // does the work once or more; the result is the seconds of one
};

// Prints the median of every contestant's turns, and by how much the first one's is larger than
// that of each other one.
void compare(const std::string& work, int turns, const std::vector<Contestant>& contestants);

// The wall time of the work divided by `count`.
double secondsEach(int count, const std::function<void()>& work);

double median(std::vector<double> values);

}  // namespace vorn_bench
