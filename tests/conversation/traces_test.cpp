// What is left behind, and by whom: nothing.
#include <memory>

#include "tests/conversation/host.h"

namespace {

class Traces : public ConversationTest {};

// Each read goes on inside the meter callback of the one before, so all are under way at once.
struct Chain {
    std::vector<std::unique_ptr<Loader>>& loaders;
    std::vector<Picture>& targets;
    size_t next = 0;
    bool good = true;
};

void readNext(VORN_Image*, VORN_Word data, int32_t) {
    auto& chain = *reinterpret_cast<Chain*>(data);
    if (chain.next == chain.loaders.size()) return;
    const size_t mine = chain.next++;
    const bool read = chain.loaders[mine]->read(
        chain.targets[mine],
        words(ITAG_MeterCallback, &readNext, ITAG_MeterCallbackUserData, data));
    chain.good = read && chain.good;
}

TEST_F(Traces, OfManyHandlesAtOnceAreKeptApart) {
    std::vector<std::unique_ptr<Loader>> loaders;
    std::vector<Picture> targets;
    for (int i = 0; i < 8; ++i) {
        loaders.push_back(std::make_unique<Loader>());
        targets.push_back(plainPicture({10, 50, 3, 1}));
        ASSERT_TRUE(loaders.back()->open("w=10,h=50,block=3,seed=" + std::to_string(i)));
    }
    Chain chain{loaders, targets};
    readNext(nullptr, reinterpret_cast<VORN_Word>(&chain), 0);
    EXPECT_TRUE(chain.good);
    for (size_t i = 0; i < targets.size(); ++i)
        EXPECT_TRUE(
            same(targets[i], loadersPicture("w=10,h=50,block=3,seed=" + std::to_string(i))));
}

}  // namespace
