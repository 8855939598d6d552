#include <gtest/gtest.h>
#include <vorn/support.h>

#include "tests/scratch_home.h"

namespace {

TEST(Diagnostics, AreLoggedOnlyWhenTheUserAsksForIt) {
    ScopedVariable variable("VORN_LOG", std::nullopt);
    testing::internal::CaptureStderr();
    dblog("silent %d\n", 1);
    variable.set("");
    dblog("silent %d\n", 2);
    variable.set("1");
    dblog("logged %d\n", 3);
    dbprint("printed %s\n", "4");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "logged 3\nprinted 4\n");
}

TEST(SystemKind, IsExactlyOne) {
    const struct {
        std::optional<std::string> name;
        bool win16, chicago, nt;
    } cases[] = {{std::nullopt, false, false, true},
                 {"win16", true, false, false},
                 {"chicago", false, true, false},
                 {"WIN16", false, false, true},
                 {"", false, false, true}};
    for (const auto& c : cases) {
        const ScopedVariable variable("VORN_SYSTEM", c.name);
        EXPECT_EQ(OSEqualWin162() != 0, c.win16);
        EXPECT_EQ(OSEqualChicago2() != 0, c.chicago);
        EXPECT_EQ(OSEqualNT2() != 0, c.nt);
    }
}

}  // namespace
