// What it costs that two programs take turns: the connection's areas, and bare primitives.
#include <linux/futex.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <memory>

#include "contest.h"
#include "peer_process.h"
#include "platform/posix/waits.h"
#include "rows.h"

namespace vorn_bench {
namespace {

using Clock = std::chrono::steady_clock;

// The first round trip, which waits until the other program has started, is not timed.
constexpr int kRoundTrips = 5000;
constexpr int kTurns = 15;

// A word in memory that two programs share, at 64-byte distance from the next.
struct alignas(64) SharedWord {
    std::atomic<uint32_t> value{0};
};

SharedWord* sharedWords(size_t count) {
    void* memory = ::mmap(nullptr, count * sizeof(SharedWord), PROT_READ | PROT_WRITE,
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return static_cast<SharedWord*>(memory);
}

// A binary semaphore made of a futex, which calls the system only to wake a sleeping waiter.
class Futex {
  public:
    explicit Futex(SharedWord* words, size_t index) : word_(&words[index].value) {}

    void post() {
        if (word_->exchange(kPosted) == kAsleep)
            ::syscall(SYS_futex, word_, FUTEX_WAKE, 1, nullptr, nullptr, 0);
    }
    bool tryWait() {
        uint32_t now = kPosted;
        return word_->load(std::memory_order_relaxed) == kPosted &&
               word_->compare_exchange_strong(now, kEmpty);
    }
    void block() {
        while (!tryWait()) {
            uint32_t now = kEmpty;
            word_->compare_exchange_strong(now, kAsleep);
            ::syscall(SYS_futex, word_, FUTEX_WAIT, kAsleep, nullptr, nullptr, 0);
        }
    }

  private:
    enum : uint32_t { kEmpty, kPosted, kAsleep };
    std::atomic<uint32_t>* word_;
};

// An eventfd as the connection has it.
class Event {
  public:
    Event() : descriptor_(::eventfd(0, EFD_SEMAPHORE | EFD_NONBLOCK)) {}
    void post() {
        const uint64_t one = 1;
        if (::write(descriptor_, &one, sizeof one) < 0) std::abort();
    }
    bool tryWait() {
        uint64_t count = 0;
        return ::read(descriptor_, &count, sizeof count) == sizeof count;
    }
    void block() {
        while (!tryWait()) {
            pollfd wait{descriptor_, POLLIN, 0};
            ::poll(&wait, 1, -1);
        }
    }

  private:
    int descriptor_;
};

// The policy of the connection's waits, around any primitive.
template <class Primitive>
void waitTrying(Primitive& primitive, vorn::platform::WaitHistory& history) {
    const auto tryOnce = [&] { return primitive.tryWait(); };
    if (!tryOnce() && !vorn::platform::tryForAWhile(history, tryOnce)) primitive.block();
}

template <class RoundTrip>
double secondsOfRoundTrips(RoundTrip roundTrip) {
    roundTrip();
    return secondsEach(kRoundTrips, [&] {
        for (int i = 0; i < kRoundTrips; ++i) roundTrip();
    });
}

// Two programs that wake each other up.
template <class Primitive>
double pingPong(Primitive ping, Primitive pong, bool tries) {
    const auto wait = [&](Primitive& primitive, vorn::platform::WaitHistory& history) {
        tries ? waitTrying(primitive, history) : primitive.block();
    };
    PeerProcess peer([&] {
        vorn::platform::WaitHistory history;
        for (int i = 0; i <= kRoundTrips; ++i) {
            wait(ping, history);
            pong.post();
        }
    });
    vorn::platform::WaitHistory history;
    return secondsOfRoundTrips([&] {
        ping.post();
        wait(pong, history);
    });
}

// The same four turns that the areas take, with nothing around them: the writer waits for a free
// area and posts a full one, the reader the other way round.
template <class Primitive>
double bareAreas(Primitive (&free)[2], Primitive (&full)[2]) {
    free[0].post();
    free[1].post();
    PeerProcess peer([&] {
        vorn::platform::WaitHistory histories[2];
        for (int i = 0; i <= kRoundTrips; ++i) {
            waitTrying(full[0], histories[0]);
            free[0].post();
            waitTrying(free[1], histories[1]);
            full[1].post();
        }
    });
    vorn::platform::WaitHistory histories[2];
    const double seconds = secondsOfRoundTrips([&] {
        waitTrying(free[0], histories[0]);
        full[0].post();
        waitTrying(full[1], histories[1]);
        free[1].post();
    });
    while (free[0].tryWait() || free[1].tryWait()) {
    }
    return seconds;
}

double areasOfBareFutexes() {
    SharedWord* words = sharedWords(4);
    Futex free[2] = {Futex(words, 0), Futex(words, 1)};
    Futex full[2] = {Futex(words, 2), Futex(words, 3)};
    const double seconds = bareAreas(free, full);
    ::munmap(words, 4 * sizeof(SharedWord));
    return seconds;
}

double areasOfBareEvents() {
    static Event free[2], full[2];
    return bareAreas(free, full);
}

void write(SharedStuff& stuff) {
    if (!VORN_L_StartWritingSharedStuff(&stuff, 64)) std::abort();
    VORN_L_EndWritingSharedStuff(&stuff);
}

void read(SharedStuff& stuff) {
    if (!VORN_L_StartReadingSharedStuff(&stuff)) std::abort();
    VORN_L_EndReadingSharedStuff(&stuff);
}

double areas() {
    Connection connection(VORN_LOADER, [](SharedStuff& module) {
        for (int i = 0; i <= kRoundTrips; ++i) {
            read(module);
            write(module);
        }
    });
    return secondsOfRoundTrips([&] {
        write(connection.host());
        read(connection.host());
    });
}

std::vector<Contestant> contestants() {
    const auto futexes = [](bool tries) {
        SharedWord* words = sharedWords(2);
        const double seconds = pingPong(Futex(words, 0), Futex(words, 1), tries);
        ::munmap(words, 2 * sizeof(SharedWord));
        return seconds;
    };
    static Event ping, pong;
    return {{"vorn", areas},
            {"futex, tries first", [=] { return futexes(true); }},
            {"futex, blocks", [=] { return futexes(false); }},
            {"futex, tries first, two areas", [=] { return areasOfBareFutexes(); }},
            {"eventfd, tries first", [=] { return pingPong(ping, pong, true); }},
            {"eventfd, blocks", [=] { return pingPong(ping, pong, false); }},
            {"eventfd, tries first, two areas", [=] { return areasOfBareEvents(); }}};
}

// A block of pixels goes from the module's memory to the host's.
constexpr size_t kBlock = vorn::kBigAreaSize;
constexpr int kBlocks = 2000;

template <class Work>
double blocksThroughConnection(Work work) {
    Connection connection(VORN_LOADER, [work](SharedStuff& module) {
        const auto mine = std::make_unique<uint8_t[]>(kBlock);
        for (int i = 0; i < kBlocks; ++i) {
            work();
            std::memcpy(VORN_L_StartWritingSharedStuff(&module, kBlock), mine.get(), kBlock);
            VORN_L_EndWritingSharedStuff(&module);
        }
    });
    const auto mine = std::make_unique<uint8_t[]>(kBlock);
    return secondsEach(kBlocks, [&] {
        for (int i = 0; i < kBlocks; ++i) {
            std::memcpy(mine.get(), VORN_L_StartReadingSharedStuff(&connection.host()), kBlock);
            VORN_L_EndReadingSharedStuff(&connection.host());
            work();
        }
    });
}

double bareBlocks() {
    return blocksThroughConnection([] {});
}

double blocksThroughFutexes() {
    SharedWord* words = sharedWords(2 + kBlock / sizeof(SharedWord));
    Futex full(words, 0), empty(words, 1);
    void* area = words + 2;
    PeerProcess peer([&] {
        const auto mine = std::make_unique<uint8_t[]>(kBlock);
        vorn::platform::WaitHistory history;
        for (int i = 0; i < kBlocks; ++i) {
            std::memcpy(area, mine.get(), kBlock);
            full.post();
            waitTrying(empty, history);
        }
    });
    const auto mine = std::make_unique<uint8_t[]>(kBlock);
    vorn::platform::WaitHistory history;
    const double seconds = secondsEach(kBlocks, [&] {
        for (int i = 0; i < kBlocks; ++i) {
            waitTrying(full, history);
            std::memcpy(mine.get(), area, kBlock);
            empty.post();
        }
    });
    ::munmap(words, 2 * sizeof(SharedWord) + kBlock);
    return seconds;
}

// Decoding and using a block, each as long as this.
constexpr std::chrono::microseconds kWork{100};

void workForAWhile() {
    for (const auto end = Clock::now() + kWork; Clock::now() < end;) {
    }
}

double workOnBothSides() { return blocksThroughConnection(workForAWhile); }

double workInOneProgram() {
    return secondsEach(kBlocks, [] {
        for (int i = 0; i < 2 * kBlocks; ++i) workForAWhile();
    });
}

}  // namespace

void handOffRows() {
    compare("Round trip, two processors", kTurns, contestants());
    {
        const OneProcessor pinned;
        compare("Round trip, one processor", kTurns, contestants());
    }
    compare("Block of 96 KiB, two copies", kTurns,
            {{"vorn", bareBlocks}, {"futex, tries first", blocksThroughFutexes}});
    compare("Block with 100 us of work on each side", 5,
            {{"vorn", workOnBothSides}, {"one program", workInOneProgram}});
}

}  // namespace vorn_bench
