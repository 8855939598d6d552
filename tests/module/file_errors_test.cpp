#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "module/module_state.h"
#include "tests/scratch_home.h"

namespace {

// The error that a module's thread holds after the action, as {pending, code, subcode}.
struct Noted {
    bool pending;
    int32_t code, subcode;
    bool operator==(const Noted&) const = default;
};

template <class Action>
Noted notedBy(Action action) {
    Noted noted{};
    std::thread([&] {
        action();
        const vorn::ModuleState& state = vorn::moduleState();
        noted = {state.errorPending, state.error[0], state.error[1]};
    }).join();
    return noted;
}

constexpr Noted kNothing{false, 0, 0};

TEST(FileErrors, AreNotedForTheHost) {
    const ScratchDirectory scratch;
    char bytes[8] = {};
    VORN_File* reading = BOpenFile(scratch.write("file", "12345").c_str(), BFILE_Read);
    VORN_File* writing = BOpenFile(scratch.path("new").c_str(), BFILE_Write);
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BRead(writing, bytes, 4), 0); }),
              (Noted{true, 0x08000016, EBADF}));
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BReadNoEOF(writing, bytes, 4), 0); }),
              (Noted{true, 0x08000016, EBADF}));
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BWrite(reading, bytes, 4), 0); }),
              (Noted{true, 0x08000025, EBADF}));
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BSeek(reading, -1, 0), -1); }),
              (Noted{true, 0x08000028, EINVAL}));
    BClose(reading);
    BClose(writing);
}

TEST(FileErrors, TellAShortReadFromAnEnd) {
    const ScratchDirectory scratch;
    char bytes[8] = {};
    VORN_File* file = BOpenFile(scratch.write("file", "12345").c_str(), BFILE_Read);
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BRead(file, bytes, 5), 5); }), kNothing);
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BSeek(file, 3, 0), 3); }), kNothing);
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BReadNoEOF(file, bytes, 8), 2); }), kNothing);
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BReadNoEOF(file, bytes, 8), 0); }), kNothing);
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BSeek(file, -2, 1), 3); }), kNothing);
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BRead(file, bytes, 8), 0); }), (Noted{true, 2, 0}));
    BClose(file);
}

TEST(FileErrors, ThereAreNoneOfAWholeWrite) {
    const ScratchDirectory scratch;
    VORN_File* file = BOpenFile(scratch.path("new").c_str(), BFILE_Write);
    EXPECT_EQ(notedBy([&] { EXPECT_EQ(VORN_M_BWrite(file, "text", 4), 4); }), kNothing);
    BClose(file);
}

}  // namespace
