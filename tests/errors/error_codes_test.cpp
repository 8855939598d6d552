#include <gtest/gtest.h>
#include <vorn/host.h>
#include <vorn/library.h>

#include <thread>

#include "transport/image.h"

namespace {

constexpr VORN_ErrorPair pairOf(int32_t code, int32_t subcode) {
    return uint64_t{static_cast<uint32_t>(subcode)} << 32 | static_cast<uint32_t>(code);
}

TEST(ErrorCodes, AreKeptForTheThreadAndTheHandle) {
    VORN_Image image, other;
    VORN_L_SetErrorCode(&image, 0x08000013, -2);
    VORN_L_SetWarningCode(&image, 7, 8);
    EXPECT_EQ(VORN_H_ImageGetError(&image), pairOf(0x08000013, -2));
    EXPECT_EQ(VORN_H_ImageGetError(nullptr), pairOf(0x08000013, -2));
    EXPECT_EQ(VORN_ErrorPairSubcode(VORN_H_ImageGetError(&image)), -2);
    EXPECT_EQ(VORN_H_ImageGetWarning(&image), pairOf(7, 8));
    EXPECT_EQ(VORN_H_ImageGetWarning(nullptr), pairOf(7, 8));
    EXPECT_EQ(VORN_H_ImageGetError(&other), 0u);

    VORN_L_SetErrorCode_DEBUG(nullptr, 5, 0, 1, 2);
    EXPECT_EQ(VORN_H_ImageGetError(nullptr), pairOf(5, 0));
    EXPECT_EQ(VORN_H_ImageGetError(&image), pairOf(0x08000013, -2));
    std::thread([] { EXPECT_EQ(VORN_H_ImageGetError(nullptr), 0u); }).join();
}

}  // namespace
