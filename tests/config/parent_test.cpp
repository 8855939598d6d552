#include <gtest/gtest.h>
#include <vorn/module.h>

#include <thread>

TEST(Parent, IsAVariableOfEachThread) {
    VORN_a_Parent = 0;
    std::thread([] { EXPECT_EQ(VORN_M_GetParent(), 1); }).join();
    EXPECT_EQ(VORN_M_GetParent(), 0);
    VORN_a_Parent = 1;
}
