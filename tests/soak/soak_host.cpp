// A host with many connections at once, each on a thread of its own: soak_host CONNECTIONS
// PICTURES DONE. Each reads so many pictures, and goes on until there is a file DONE. Modules may
// be killed at any moment. Every picture that arrives must be right. Standard output gets the
// numbers of pictures that arrived and that were lost.
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <thread>

#include "tests/conversation/host.h"
#include "tests/soak/amounts.h"

// The test that starts this program has installed them.
void installLoader(const std::string&) {}
void installSaver(const std::string&, const std::string&) {}

namespace {

constexpr int kLinkError = 3;

std::atomic<int> arrived{0};
std::atomic<int> lost{0};
std::atomic<int> wrong{0};

// Every connection reads all the pictures, whatever becomes of each. It is made anew after its
// module has died.
void readAll(const std::vector<Picture>& expected, const std::string& done) {
    std::unique_ptr<Loader> loader;
    for (size_t i = 0; i < expected.size() || !std::filesystem::exists(done); ++i) {
        const size_t number = i % expected.size();
        const Picture target = plainPicture(shapeOf(expected[number]));
        if (!loader) loader = std::make_unique<Loader>();
        const bool read =
            loader->open(soakPicture(static_cast<int>(number))) && loader->read(target);
        const auto result = same(target, expected[number]);
        if (read && result) {
            ++arrived;
        } else if (!read && loader->error() == kLinkError) {
            ++lost;
        } else {
            std::fprintf(stderr, "picture %zu: error %d %s\n", number, loader->error(),
                         result.message());
            ++wrong;
        }
        if (!read) loader.reset();
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 1;
    std::vector<Picture> expected;
    for (int i = 0; i < std::atoi(argv[2]); ++i) expected.push_back(loadersPicture(soakPicture(i)));
    std::vector<std::thread> threads;
    for (int i = 0; i < std::atoi(argv[1]); ++i)
        threads.emplace_back(readAll, std::cref(expected), argv[3]);
    for (std::thread& thread : threads) thread.join();
    std::printf("%d %d\n", arrived.load(), lost.load());
    return wrong != 0;
}
