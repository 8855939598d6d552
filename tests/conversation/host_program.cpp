// A host of its own that reads and compares pictures. Arguments: COUNT SEED.
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/conversation/host.h"

// The test that starts this program has installed them.
void installLoader(const std::string&) {}
void installSaver(const std::string&, const std::string&) {}

namespace {

int readPictures(int count, int seed) {
    Loader loader;
    for (int i = 0; i < count; ++i) {
        const auto result = loader.reads("w=" + std::to_string(10 + i) +
                                         ",h=40,block=3,seed=" + std::to_string(seed + i));
        if (!result) std::fprintf(stderr, "%s\n", result.message());
        if (!result) return 1;
        loader.closeImage();
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return argc == 3 ? readPictures(std::atoi(argv[1]), std::atoi(argv[2])) : 2;
}
