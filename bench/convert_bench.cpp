// The tool beside one program that does the same work with libpng alone: time from a PNG file to a
// PPM file, programs started and ended included; and the memory of all of the tool's programs.
//
//     convert_bench [PICTURE.png [DIRECTORY [RUNS [VORN]]]]
//
// The picture is one of 8-bit RGB; without one, one of 6000 x 4000 is painted. The files are
// written to the directory, which should lie in memory. The contestants take turns; medians count.
#include <png.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "contest.h"
#include "memory.h"
#include "png_in_process.h"
#include "started.h"

namespace vorn_bench {
namespace {

// The other contestant, run as a program of its own: 8-bit RGB, not interlaced.
struct Peer {
    explicit Peer(const char* in) : file(std::fopen(in, "rb")) {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        info = png_create_info_struct(png);
        if (!file || setjmp(png_jmpbuf(png))) std::exit(1);
        png_init_io(png, file);
        png_read_info(png, info);
        width = png_get_image_width(png, info);
        height = png_get_image_height(png, info);
        if (png_get_rowbytes(png, info) != 3 * width) std::exit(1);
    }

    std::FILE* file;
    png_structp png;
    png_infop info;
    size_t width = 0;
    size_t height = 0;
};

std::FILE* beginPpm(const char* out, size_t width, size_t height) {
    std::FILE* file = std::fopen(out, "wb");
    if (!file) std::exit(1);
    std::fprintf(file, "P6\n%zu %zu\n255\n", width, height);
    return file;
}

int copyPng(const char* in, const char* out) {
    Peer peer(in);
    std::FILE* file = beginPpm(out, peer.width, peer.height);
    std::vector<png_byte> line(3 * peer.width);
    for (size_t y = 0; y < peer.height; ++y) {
        png_read_row(peer.png, line.data(), nullptr);
        std::fwrite(line.data(), 1, line.size(), file);
    }
    png_read_end(peer.png, nullptr);
    return std::fclose(file);
}

// The mean of each 2 by 2 pixels.
void halve(const png_byte* above, const png_byte* below, png_byte* out, size_t width) {
    for (size_t x = 0; x < width; ++x) {
        for (size_t c = 0; c < 3; ++c) {
            const size_t i = 6 * x + c;
            const int sum = above[i] + above[i + 3] + below[i] + below[i + 3];
            out[3 * x + c] = static_cast<png_byte>((sum + 2) / 4);
        }
    }
}

int halvePng(const char* in, const char* out) {
    Peer peer(in);
    std::FILE* file = beginPpm(out, peer.width / 2, peer.height / 2);
    std::vector<png_byte> above(3 * peer.width), below(3 * peer.width), line(3 * peer.width / 2);
    for (size_t y = 0; y < peer.height / 2; ++y) {
        png_read_row(peer.png, above.data(), nullptr);
        png_read_row(peer.png, below.data(), nullptr);
        halve(above.data(), below.data(), line.data(), peer.width / 2);
        std::fwrite(line.data(), 1, line.size(), file);
    }
    png_read_end(peer.png, nullptr);
    return std::fclose(file);
}

void row(const char* name,
         const std::vector<std::string>& tool,
         const std::vector<std::string>& peer,
         int runs) {
    std::vector<double> wall[2], cpu[2];
    for (int i = 0; i <= runs; ++i) {
        for (int who = 0; who < 2; ++who) {
            const Spent spent = run(who == 0 ? tool : peer);
            if (i == 0) continue;  // brings files and programs into memory
            wall[who].push_back(spent.wall);
            cpu[who].push_back(spent.cpu);
        }
    }
    std::printf(
        "%-16s wall %7.1f ms, libpng %7.1f ms: %.3f   CPU %7.1f ms, libpng %7.1f ms: %.3f\n", name,
        1e3 * median(wall[0]), 1e3 * median(wall[1]), median(wall[0]) / median(wall[1]),
        1e3 * median(cpu[0]), 1e3 * median(cpu[1]), median(cpu[0]) / median(cpu[1]));
    std::fflush(stdout);
}

}  // namespace
}  // namespace vorn_bench

int main(int argc, char** argv) {
    using namespace vorn_bench;
    if (argc == 4 && std::strcmp(argv[1], "--copy") == 0) return copyPng(argv[2], argv[3]);
    if (argc == 4 && std::strcmp(argv[1], "--halve") == 0) return halvePng(argv[2], argv[3]);
    const std::string directory = argc > 2 ? argv[2] : "/dev/shm";
    const std::string painted = directory + "/vorn-bench-photo.png";
    const std::string in = argc > 1 ? argv[1] : painted;
    const int runs = argc > 3 ? std::atoi(argv[3]) : 7;
    const std::string tool = argc > 4 ? argv[4] : VORN_BENCH_TOOL;
    const std::string ours = directory + "/vorn-bench-ours.ppm";
    const std::string theirs = directory + "/vorn-bench-libpng.ppm";
    if (argc < 2) writePng(painted, paint(6000, 4000));
    row("PNG to PPM", {tool, "convert", in, ours}, {argv[0], "--copy", in, theirs}, runs);
    row("PNG to 50 % PPM", {tool, "convert", in, ours, "--size", "50%"},
        {argv[0], "--halve", in, theirs}, runs);
    printMemory("PNG to PPM", {tool, "convert", in, ours});
    printMemory("PNG to 50 % PPM", {tool, "convert", in, ours, "--size", "50%"});
    printMemory("PNG to PPM, mirrored", {tool, "convert", in, ours, "--orientation", "4"});
    printMemory("50 % PPM to PNG", {tool, "convert", theirs, ours, "--saver", "png"});
    for (const std::string& file : {painted, ours, theirs}) std::remove(file.c_str());
    return 0;
}
