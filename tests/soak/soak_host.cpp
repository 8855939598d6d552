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

// A connection that is made anew after its module has died.
class Connection {
  public:
    // False when the picture was lost.
    bool read(int number, const Picture& target) {
        if (!loader_) loader_ = std::make_unique<Loader>();
        if (loader_->open(soakPicture(number)) && loader_->read(target)) {
            loader_->closeImage();
            return true;
        }
        if (loader_->code() != kLinkError) {
            std::fprintf(stderr, "picture %d: error %d\n", number, loader_->code());
            ++wrong;
        }
        loader_.reset();
        return false;
    }

  private:
    std::unique_ptr<Loader> loader_;
};

// Every connection reads all the pictures, whatever becomes of each.
void readAll(const std::vector<Picture>& expected, const std::string& done) {
    Connection connection;
    for (size_t i = 0; i < expected.size() || !std::filesystem::exists(done); ++i) {
        const size_t number = i % expected.size();
        const Picture target = plainPicture(shapeOf(expected[number]));
        if (!connection.read(static_cast<int>(number), target)) {
            ++lost;
        } else if (const auto result = same(target, expected[number])) {
            ++arrived;
        } else {
            std::fprintf(stderr, "picture %zu: %s\n", number, result.message());
            ++wrong;
        }
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
