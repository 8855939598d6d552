// A module may change a message while the host reads it: here a second thread of the module does,
// without a pause.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/lies/scripted_module.h"
#include "transport/message.h"

namespace {

// Puts hostile words into the first bytes of an area, one after the other, and each time takes the
// last one back, until it ends.
class Meddler {
  public:
    Meddler(uint8_t* area, size_t size)
        : words_(reinterpret_cast<uint32_t*>(area)), count_(std::min<size_t>(size, 256) / 4) {}
    ~Meddler() {
        done_ = true;
        thread_.join();
    }
    Meddler(const Meddler&) = delete;
    Meddler& operator=(const Meddler&) = delete;

    // Waits until it has changed something.
    void awaitChange() const {
        const size_t before = changes_;
        while (changes_ == before) std::this_thread::yield();
    }

  private:
    void meddle() {
        constexpr uint32_t kHostile[] = {0, 4, 9, 0x7FFFFFFC, 0xFFFFFFF0, TAG_Goto, 0x10000};
        for (size_t round = 0; !done_; ++round) {
            uint32_t* word = words_ + round * 7 % count_;
            const uint32_t good = __atomic_load_n(word, __ATOMIC_RELAXED);
            __atomic_store_n(word, kHostile[round % std::size(kHostile)], __ATOMIC_RELAXED);
            ++changes_;
            __atomic_store_n(word, good, __ATOMIC_RELAXED);
        }
    }

    uint32_t* words_;
    size_t count_;
    std::atomic<bool> done_{false};
    std::atomic<size_t> changes_{0};
    std::thread thread_{[this] { meddle(); }};
};

// Whether a list that the host believes keeps to its bounds and stays as it is.
bool isSound(const VORN_TagItem* list, uint32_t most) {
    uint32_t sums[2] = {0, 0};
    for (uint32_t& sum : sums) {
        for (const VORN_TagItem* item = list; item->id != TAG_End;) {
            const uint32_t length = item->length;
            if (length < sizeof *item || length > most - sum || item->id == TAG_Goto) return false;
            sum += length;
            item =
                reinterpret_cast<const VORN_TagItem*>(reinterpret_cast<const uint8_t*>(list) + sum);
        }
    }
    return sums[0] == sums[1];
}

TEST(AMessageThatChanges, IsBelievedOnlyInThePrivateCopy) {
    constexpr uint32_t kItems = 20;
    constexpr uint32_t kSize = 12 * kItems + 8;
    ScriptedModule module(VORN_LOADER, {}, kSize, false);
    SharedStuff& stuff = module.image()->stuff;
    MessageBytes good;
    for (uint32_t i = 0; i < kItems; ++i) good.number(ITAG_Width, 1);
    std::memcpy(stuff.readPointer, good.end().data(), kSize);
    const Meddler meddler(stuff.readPointer, kSize);
    int believed = 0;
    int refused = 0;
    for (int round = 0; round < 100000 || believed < 1000 || refused < 1000; ++round) {
        stuff.readHeld = true;
        vorn::Message message;
        const bool received = vorn::receiveMessage(*module.image(), message);
        ++(received ? believed : refused);
        if (!received) continue;
        if (round % 100 == 0) meddler.awaitChange();
        ASSERT_TRUE(isSound(message.list, kSize));
    }
}

}  // namespace
