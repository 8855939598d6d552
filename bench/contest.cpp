#include "contest.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace vorn_bench {
namespace {

std::string readable(double seconds) {
    char text[32];
    if (seconds < 1e-3)
        std::snprintf(text, sizeof text, "%10.2f us", seconds * 1e6);
    else
        std::snprintf(text, sizeof text, "%10.2f ms", seconds * 1e3);
    return text;
}

}  // namespace

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

double secondsEach(int count, const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / count;
}

void compare(const std::string& work, int turns, const std::vector<Contestant>& contestants) {
    std::vector<std::vector<double>> taken(contestants.size());
    for (int turn = 0; turn <= turns; ++turn) {
        for (size_t i = 0; i < contestants.size(); ++i) {
            const double seconds = contestants[i].turn();
            if (turn > 0) taken[i].push_back(seconds);  // the first turn warms up
        }
    }
    std::printf("%s\n", work.c_str());
    const double ours = median(taken[0]);
    for (size_t i = 0; i < contestants.size(); ++i) {
        const double theirs = median(taken[i]);
        std::printf("    %-40s %s", contestants[i].name.c_str(), readable(theirs).c_str());
        if (i > 0) std::printf("   %s is at %.2f", contestants[0].name.c_str(), ours / theirs);
        std::printf("\n");
    }
    std::fflush(stdout);
}

}  // namespace vorn_bench
