// A host with many connections at once, each on a thread of its own: soak_host CONNECTIONS
// PICTURES. Its modules may be killed at any moment. Every picture that arrives must be the one
// that a single connection got. Standard output gets the numbers of pictures that arrived and that
// were lost.
#include <atomic>
#include <cstdio>
#include <memory>
#include <thread>

#include "tests/conversation/host.h"

// The test that starts this program has installed them.
void installLoader(const std::string&) {}
void installSaver(const std::string&, const std::string&) {}

namespace {

constexpr int kLinkError = 3;
constexpr int kWidth = 40;
constexpr int kHeight = 30;

std::atomic<int> arrived{0};
std::atomic<int> lost{0};
std::atomic<int> wrong{0};

std::string pictureName(int number) {
    return "w=" + std::to_string(kWidth) + ",h=" + std::to_string(kHeight) +
           ",block=4,seed=" + std::to_string(number);
}

// A connection that is made anew after its module has died.
class Connection {
  public:
    // False when the picture was lost.
    bool read(int number, const Picture& target) {
        if (!loader_) loader_ = std::make_unique<Loader>();
        if (loader_->open(pictureName(number)) && loader_->read(target)) {
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

std::vector<Picture> readOneAfterTheOther(int pictures) {
    std::vector<Picture> all;
    Connection connection;
    for (int number = 0; number < pictures; ++number) {
        all.push_back(plainPicture({kWidth, kHeight, 3, 1}));
        while (!connection.read(number, all.back())) {
        }
    }
    return all;
}

void readAll(const std::vector<Picture>& expected) {
    Connection connection;
    for (size_t number = 0; number < expected.size(); ++number) {
        const Picture target = plainPicture({kWidth, kHeight, 3, 1});
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
    if (argc != 3) return 1;
    const std::vector<Picture> expected = readOneAfterTheOther(std::atoi(argv[2]));
    std::vector<std::thread> threads;
    for (int i = 0; i < std::atoi(argv[1]); ++i) threads.emplace_back(readAll, std::cref(expected));
    for (std::thread& thread : threads) thread.join();
    std::printf("%d %d\n", arrived.load(), lost.load());
    return wrong != 0;
}
