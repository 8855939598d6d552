// What a host and its modules hold must not grow with the number of their conversations.
#include <malloc.h>

#include <cstdio>
#include <fstream>
#include <functional>

#include "tests/conversation/host.h"
#include "tests/soak/amounts.h"

namespace {

using Soak = ConversationTest;

constexpr char kPicture[] = "w=9,h=9";

size_t countOf(const std::string& directory) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(directory), {}));
}

size_t lines(const std::string& text) {
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

struct Holdings {
    size_t descriptors = countOf("/proc/self/fd");
    size_t threads = countOf("/proc/self/task");
    size_t mappings = isSanitized() ? 0 : lines(contentOf("/proc/self/maps"));
    size_t bytes =
        isSanitized() ? __sanitizer_get_current_allocated_bytes() : ::mallinfo2().uordblks;
};

// Size of a program's own data, heap and stacks.
std::string dataOf(int program) {
    std::ifstream status("/proc/" + std::to_string(program) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmData:", 0) == 0) return line;
    }
    return "";
}

// After a few rounds, in which buffers find their sizes, nothing may be added. The C library counts
// small blocks that it keeps for later as used: so many bytes don't matter as no leak of every
// round could get by with.
void expectFlat(const char* what, int rounds, const std::function<void(int)>& round) {
    constexpr int kFirst = 50;
    int i = 0;
    while (i < kFirst && !testing::Test::HasFatalFailure()) round(i++);
    const Holdings before;
    while (i < kFirst + rounds && !testing::Test::HasFatalFailure()) round(i++);
    const Holdings after;
    EXPECT_EQ(after.descriptors, before.descriptors);
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_EQ(after.mappings, before.mappings);
    EXPECT_LT(after.bytes, before.bytes + static_cast<size_t>(rounds));
    std::printf(
        "%d %s: %zu descriptors, %zu threads, %zu mappings before and after, %zu and %zu bytes\n",
        rounds, what, after.descriptors, after.threads, after.mappings, before.bytes, after.bytes);
}

TEST_F(Soak, OfPicturesOpenedAndClosedLeavesHostAndModuleAsTheyWere) {
    Loader loader;
    const Picture target = plainPicture({9, 9, 3, 1});
    std::string data;
    const int cycles = amount(10000, 1000);
    expectFlat("pictures opened and closed", cycles, [&](int i) {
        ASSERT_TRUE(loader.open(kPicture));
        ASSERT_TRUE(i % 2 == 0 || loader.read(target));
        ASSERT_TRUE(loader.close());
        if (i == 20) data = dataOf(loader.program());
    });
    EXPECT_NE(data, "");
    EXPECT_TRUE(isSanitized() || dataOf(loader.program()) == data);
}

TEST_F(Soak, OfModulesStartedLeavesTheHostAsItWas) {
    const Picture picture = plainPicture({9, 9, 3, 1});
    const std::string directory = moduleHome().makeDirectory("saved");
    expectFlat("modules started", amount(1000, 100), [&](int i) {
        if (i % 10 == 0) {
            Loader dying;
            ASSERT_FALSE(dying.open("kill=begin"));
            ASSERT_FALSE(dying.open("kill=begin"));
        } else if (i % 10 < 5) {
            Saver saver;
            ASSERT_TRUE(saver.open(directory + "/picture"));
            saver.describe(picture, VORN_CS_RGB);
            ASSERT_TRUE(saver.write(picture));
        } else {
            Loader loader;
            ASSERT_TRUE(loader.open(kPicture) && loader.read(picture));
        }
        ASSERT_FALSE(hasChildren());
    });
    EXPECT_EQ(countOf(directory), 1u);
}

}  // namespace
