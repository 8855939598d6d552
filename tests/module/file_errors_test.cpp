#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <thread>

#include "module/module_state.h"
#include "tests/scratch_home.h"

namespace {

TEST(FileErrors, AreNotedForTheHostAndAShortReadIsNoEnd) {
    const ScratchDirectory scratch;
    char bytes[8] = {};
    VORN_File* reading = BOpenFile(scratch.write("file", "12345").c_str(), BFILE_Read);
    VORN_File* writing = BOpenFile(scratch.path("new").c_str(), BFILE_Write);
    const struct {
        std::function<int64_t()> call;
        int64_t result;
        int32_t code, subcode;  // that the module's thread holds afterwards; 0: none
    } cases[] = {
        {[&] { return VORN_M_BRead(writing, bytes, 4); }, 0, 0x08000016, EBADF},
        {[&] { return VORN_M_BReadNoEOF(writing, bytes, 4); }, 0, 0x08000016, EBADF},
        {[&] { return VORN_M_BWrite(reading, bytes, 4); }, 0, 0x08000025, EBADF},
        {[&] { return VORN_M_BSeek(reading, -1, 0); }, -1, 0x08000028, EINVAL},
        {[&] { return VORN_M_BWrite(writing, "text", 4); }, 4, 0, 0},
        {[&] { return VORN_M_BRead(reading, bytes, 5); }, 5, 0, 0},
        {[&] { return VORN_M_BSeek(reading, 3, 0); }, 3, 0, 0},
        {[&] { return VORN_M_BReadNoEOF(reading, bytes, 8); }, 2, 0, 0},
        {[&] { return VORN_M_BReadNoEOF(reading, bytes, 8); }, 0, 0, 0},
        {[&] { return VORN_M_BSeek(reading, -2, 1); }, 3, 0, 0},
        {[&] { return VORN_M_BRead(reading, bytes, 8); }, 0, 2, 0},
    };
    for (const auto& c : cases) {
        std::thread([&] {
            EXPECT_EQ(c.call(), c.result) << &c - cases;
            const vorn::ModuleState& state = vorn::moduleState();
            EXPECT_EQ(state.errorPending, c.code != 0) << &c - cases;
            EXPECT_EQ(state.error[0], c.code) << &c - cases;
            EXPECT_EQ(state.error[1], c.subcode) << &c - cases;
        }).join();
    }
    BClose(reading);
    BClose(writing);
}

}  // namespace
