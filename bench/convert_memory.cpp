// The most memory that a conversion takes in all programs: each program's proportional share (PSS),
// looked at again and again while it runs.
//
//     convert_memory VORN convert IN OUT [OPTIONS]
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "started.h"

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

struct Program {
    const char* name;
    std::string path;  // what its own path begins with
    long now = 0;
    long most = 0;
};

void look(std::vector<Program>& programs) {
    for (Program& program : programs) program.now = 0;
    for (const auto& process : fs::directory_iterator("/proc")) {
        std::error_code error;
        const std::string path = fs::read_symlink(process.path() / "exe", error).string();
        for (Program& program : programs) {
            if (!error && path.starts_with(program.path)) program.now += share(process.path());
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const std::string tool = fs::canonical(argv[1]).string();
    const std::string home = (fs::path(tool).parent_path().parent_path() / "VORN").string();
    std::vector<Program> programs = {
        {"tool", tool}, {"loader", home + "/Loaders/"}, {"saver", home + "/Savers/"}};
    long mostOfAll = 0;
    int samples = 0;
    const pid_t id = vorn_bench::start(std::vector<std::string>(argv + 1, argv + argc));
    int status = 0;
    while (waitpid(id, &status, WNOHANG) == 0) {
        look(programs);
        long sum = 0;
        for (Program& program : programs) {
            program.most = std::max(program.most, program.now);
            sum += program.now;
        }
        mostOfAll = std::max(mostOfAll, sum);
        ++samples;
    }
    for (const Program& program : programs)
        std::printf("%-8s %8.2f MiB\n", program.name, static_cast<double>(program.most) / 1024);
    std::printf("%-8s %8.2f MiB (at one time, of %d samples)\n", "all",
                static_cast<double>(mostOfAll) / 1024, samples);
    return status != 0;
}
