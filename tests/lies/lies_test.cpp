// Seeded streams of modules that lie. The host answers each with an error or with the right
// picture; the sanitizers see whether it looks anywhere else than where it may.
//
// VORN_LIES_STREAMS says how many streams, VORN_LIES_FIRST with which number to begin (to see one
// again).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "tests/lies/talk.h"
#include "tests/scratch_home.h"

namespace {

uint32_t setting(const char* name, uint32_t otherwise) {
    const char* value = std::getenv(name);
    return value ? static_cast<uint32_t>(std::strtoul(value, nullptr, 10)) : otherwise;
}

TalkResult tell(uint32_t number, bool& honest) {
    Random random(number);
    Stream stream = goodStream(random);
    const std::vector<ScriptStep> good = scriptOf(stream);
    honest = chance(random, 16);
    for (int lies = honest ? 0 : pick(random, 1, 4); lies > 0; --lies) tellLie(random, stream);
    std::vector<ScriptStep> script = scriptOf(stream);
    // The area ends where a message does, or where the protocol says.
    const uint32_t sizes[] = {
        longestMessage(good), longestMessage(script),
        static_cast<uint32_t>(stream.type == VORN_LOADER ? vorn::kBigAreaSize
                                                         : vorn::kSmallAreaSize)};
    const uint32_t size =
        honest ? sizes[0] : sizes[chance(random, 16) ? 2 : static_cast<size_t>(pick(random, 0, 1))];
    ScriptedModule module(stream.type, std::move(script), size, chance(random, 2));
    return talk(random, module, stream);
}

TEST(Lies, EndInAnErrorOrTheRightPicture) {
    const ScratchHome home;
    const uint32_t first = setting("VORN_LIES_FIRST", 0);
    const uint32_t count = setting("VORN_LIES_STREAMS", 10000);
    uint32_t failed = 0;
    uint32_t whole = 0;
    for (uint32_t number = first; number - first < count; ++number) {
        bool honest = false;
        const TalkResult result = tell(number, honest);
        ASSERT_EQ(result.mistake, "") << "stream " << number;
        failed += result.failures > 0;
        whole += result.failures == 0 && result.pictures > 0;
    }
    std::printf("%u streams: %u ended in errors, %u in pictures\n", count, failed, whole);
    EXPECT_TRUE(count < 1000 || (failed > count / 4 && whole > count / 8));
}

}  // namespace
