// Modules that use more than they may.
#include <vorn/host.h>

#include "tests/injection/talk.h"
#include "tests/injection/wire.h"

namespace {

constexpr uint64_t kMebibyte = 1 << 20;

class Limits : public InjectedTest {
  protected:
    void SetUp() override {
        ConversationTest::SetUp();
#ifdef VORN_SANITIZED
        GTEST_SKIP() << "a sanitized program can't do with limited memory";
#endif
    }
    ScopedVariable order_{"VORN_TEST_STEP", std::nullopt};
};

TEST_F(Limits, ThatAModuleMeetsEndItAndAreNamed) {
    const struct {
        const char* action;
        VORN_ModuleLimits limits;
        int code;
        std::vector<int> steps;
    } cases[] = {
        {"spin", {256 * kMebibyte, 1}, 75, {25}},
        {"allocate", {128 * kMebibyte, 0}, 76, {2, 3, 9, 15, 21, 24, 27}},
        {"allocate", {128 * kMebibyte, 9}, 76, {26}},
    };
    for (const auto& c : cases) {
        for (const int step : c.steps) {
            for (const Kind kind : {Kind::Loading, Kind::Saving}) {
                SCOPED_TRACE(std::string(c.action) + " " + nameOf(kind) + std::to_string(step));
                order_.set(std::string(c.action) + " " + std::to_string(step));
                Talk talk(kind, directory_);
                VORN_H_ModuleSetLimits(talk, &c.limits);
                EXPECT_FALSE(talk.whole());
                EXPECT_EQ(talk.error(), c.code);
                talk.close();
                order_.set(std::nullopt);
                EXPECT_TRUE(talk.whole()) << "under limits that suffice";
            }
        }
    }
}

TEST_F(Limits, OfMemoryAreSetForLoadersByTheLibrary) {
    ScopedVariable variable("VORN_MEMORY_LIMIT", std::nullopt);
    const auto limitOf = [](Kind kind, const std::string& directory) {
        Talk talk(kind, directory);
        VORN_ModuleLimits limits{1, 1};
        VORN_H_ModuleGetLimits(talk, &limits);
        EXPECT_EQ(limits.cpuSeconds, 0u);
        return limits.addressSpaceBytes;
    };
    EXPECT_EQ(limitOf(Kind::Loading, directory_), 4096 * kMebibyte);
    const std::pair<const char*, uint64_t> cases[] = {{"0", 0},
                                                      {"4096", 4096},
                                                      {"128M", 128 * kMebibyte},
                                                      {"1g", 1024 * kMebibyte},
                                                      {"128MB", 4096 * kMebibyte},
                                                      {"-1", 4096 * kMebibyte},
                                                      {"20000000000G", 4096 * kMebibyte}};
    for (const auto& [text, bytes] : cases) {
        variable.set(text);
        EXPECT_EQ(limitOf(Kind::Loading, directory_), bytes) << text;
        EXPECT_EQ(limitOf(Kind::Saving, directory_), 0u);
    }
    variable.set("128M");
    order_.set("allocate 9");
    Talk talk(Kind::Loading, directory_);
    EXPECT_FALSE(talk.whole());
    EXPECT_EQ(talk.error(), 76);
}

TEST_F(Limits, OfMemoryAreNamedAlsoWhenTheModuleSaysThatMemoryIsShort) {
    for (const uint64_t bytes : {uint64_t{0}, 256 * kMebibyte}) {
        Loader loader;
        const VORN_ModuleLimits limits{bytes, 0};
        VORN_H_ModuleSetLimits(loader, &limits);
        EXPECT_FALSE(loader.open("fail=open,code=17"));
        EXPECT_EQ(loader.error(), bytes ? 76 : 17);
    }
}

}  // namespace
