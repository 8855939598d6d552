// The tool beside one program that does the same work with the codec libraries alone: time from
// file to file, programs started and ended included; and the memory of all of the tool's programs.
//
//     convert_bench [DIRECTORY [RUNS [VORN]]]
//
// A picture of 6000 x 4000 is painted. The files are written to the directory, which should lie in
// memory. The contestants take turns; medians count.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "contest.h"
#include "convert_peers.h"
#include "memory.h"
#include "png_in_process.h"
#include "started.h"

namespace vorn_bench {
namespace {

namespace fs = std::filesystem;

struct Job {
    const char* name;  // that of the peer
    const char* from;
    const char* to;
    const char* size;
};

constexpr Job kJobs[] = {{"PNG to PPM", "png", "ppm", "100%"},
                         {"PNG to 50 % PPM", "png", "ppm", "50%"},
                         {"JPEG to a JPEG 400 wide", "jpg", "jpg", "400"},
                         {"JPEG to PNG", "jpg", "png", "100%"},
                         {"PNG to 50 % TIFF", "png", "tif", "50%"}};

class Bench {
  public:
    Bench(std::string self, int argc, char** argv)
        : self_(std::move(self)),
          directory_(argc > 1 ? argv[1] : "/dev/shm"),
          runs_(argc > 2 ? std::atoi(argv[2]) : 7),
          tool_(argc > 3 ? argv[3] : VORN_BENCH_TOOL) {
        const Rgb picture = paint(6000, 4000);
        writePng(file("photo", "png"), picture);
        hasJpeg_ = writeJpeg(file("photo", "jpg"), picture);
    }
    ~Bench() {
        for (const std::string& name : files_) fs::remove(name);
    }
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    void run() {
        for (const Job& job : kJobs) {
            if (hasConvertPeer(job.name)) time(job);
        }
        for (const Job& job : kJobs) {
            if (hasConvertPeer(job.name)) printMemory(job.name, ours(job));
        }
        printMemory("PNG to PPM, mirrored", convert("photo", "png", "ppm", {"--orientation", "4"}));
        for (const char* type : {"ppm", "png", "jpg", "tif", "bmp", "tga"}) weigh(type);
    }

  private:
    // A file of the benchmark; it is removed in the end.
    std::string file(const std::string& name, const std::string& type) {
        files_.push_back(directory_ + "/vorn-bench-" + name + "." + type);
        return files_.back();
    }

    std::vector<std::string> convert(const char* name,
                                     const char* from,
                                     const char* to,
                                     const std::vector<std::string>& options = {}) {
        std::vector<std::string> command = {tool_, "convert", file(name, from), file("ours", to)};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }
    std::vector<std::string> ours(const Job& job) {
        return convert("photo", job.from, job.to, {"--size", job.size});
    }

    // The contestants make pictures of one size, to begin with.
    void time(const Job& job) {
        const std::vector<std::string> commands[] = {
            ours(job), {self_, "--peer", job.name, file("photo", job.from), file("peer", job.to)}};
        std::vector<double> wall[2], cpu[2];
        for (int i = 0; i <= runs_; ++i) {
            for (int who = 0; who < 2; ++who) {
                const Spent spent = vorn_bench::run(commands[who]);
                if (i == 0) continue;  // brings files and programs into memory
                wall[who].push_back(spent.wall);
                cpu[who].push_back(spent.cpu);
            }
        }
        std::printf(
            "%-24s wall %7.1f ms, libraries %7.1f ms: %.3f   CPU %7.1f ms, libraries %7.1f ms: "
            "%.3f   bytes %.3f\n",
            job.name, 1e3 * median(wall[0]), 1e3 * median(wall[1]),
            median(wall[0]) / median(wall[1]), 1e3 * median(cpu[0]), 1e3 * median(cpu[1]),
            median(cpu[0]) / median(cpu[1]),
            static_cast<double>(fs::file_size(file("ours", job.to))) /
                static_cast<double>(fs::file_size(file("peer", job.to))));
        std::fflush(stdout);
    }

    // A format read and written.
    void weigh(const char* type) {
        if (std::strcmp(type, "jpg") == 0 && !hasJpeg_) return;
        if (!fs::exists(file("photo", type))) {
            vorn_bench::run({tool_, "convert", file("photo", "png"), file("photo", type)});
        }
        printMemory(std::string(type) + " to " + type, convert("photo", type, type));
    }

    const std::string self_, directory_;
    const int runs_;
    const std::string tool_;
    bool hasJpeg_ = false;
    std::vector<std::string> files_;
};

}  // namespace
}  // namespace vorn_bench

int main(int argc, char** argv) {
    if (argc == 5 && std::strcmp(argv[1], "--peer") == 0) {
        return vorn_bench::convertPeer(argv[2], argv[3], argv[4]);
    }
    vorn_bench::Bench(argv[0], argc, argv).run();
    return 0;
}
