#include "memory.h"

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "started.h"

namespace vorn_bench {
namespace {

namespace fs = std::filesystem;

// KiB; 0 for a program that has ended.
long share(const fs::path& process) {
    std::ifstream rollup(process / "smaps_rollup");
    for (std::string line; std::getline(rollup, line);) {
        if (line.starts_with("Pss:")) return std::strtol(line.c_str() + 4, nullptr, 10);
    }
    return 0;
}

struct Shares {
    long tool = 0, loader = 0, saver = 0, all = 0;

    void keepMost(const Shares& now) {
        tool = std::max(tool, now.tool);
        loader = std::max(loader, now.loader);
        saver = std::max(saver, now.saver);
        all = std::max(all, now.tool + now.loader + now.saver);
    }
};

Shares look(pid_t tool, const std::string& home) {
    Shares now;
    now.tool = share("/proc/" + std::to_string(tool));
    for (const auto& process : fs::directory_iterator("/proc")) {
        std::error_code error;
        const std::string path = fs::read_symlink(process.path() / "exe", error).string();
        if (path.starts_with(home + "/Loaders/")) now.loader += share(process.path());
        if (path.starts_with(home + "/Savers/")) now.saver += share(process.path());
    }
    return now;
}

double mebibytes(long kibibytes) { return static_cast<double>(kibibytes) / 1024; }

}  // namespace

void printMemory(const std::string& name, const std::vector<std::string>& command) {
    const fs::path tool = fs::canonical(command[0]);
    const std::string home = (tool.parent_path().parent_path() / "VORN").string();
    Shares most;
    const pid_t id = start(command);
    while (waitpid(id, nullptr, WNOHANG) == 0) most.keepMost(look(id, home));
    std::printf("%-28s tool %6.2f, loader %6.2f, saver %6.2f, all at one time %6.2f MiB\n",
                name.c_str(), mebibytes(most.tool), mebibytes(most.loader), mebibytes(most.saver),
                mebibytes(most.all));
    std::fflush(stdout);
}

}  // namespace vorn_bench
