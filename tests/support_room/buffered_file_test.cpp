#include <fcntl.h>
#include <gtest/gtest.h>
#include <vorn/support.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/scratch_home.h"
#include "tests/support/failing_memory.h"
#include "tests/support/file_limit.h"

namespace {

// Longer than the buffer by some, and without a period that a mistake could hide in.
std::string longText(size_t size = 300'007) {
    std::string text(size, '\0');
    uint32_t state = 1;
    for (char& letter : text) {
        state = state * 1664525 + 1013904223;
        letter = static_cast<char>(state >> 24);
    }
    return text;
}

class File {
  public:
    File(const std::string& path, int32_t mode) : file_(BOpenFile(path.c_str(), mode)) {}
    ~File() { BClose(file_); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    operator VORN_File*() const { return file_; }

  private:
    VORN_File* file_;
};

std::string readPart(VORN_File* file, size_t count) {
    std::string part(count, '?');
    part.resize(static_cast<size_t>(BRead(file, part.data(), static_cast<int32_t>(count))));
    EXPECT_EQ(BGetErrorCode(), 0);
    return part;
}

TEST(BufferedFile, GivesTheSameBytesInPartsOfAnySize) {
    const ScratchDirectory scratch;
    const std::string text = longText();
    const std::string path = scratch.write("file", text);
    for (const size_t part : {size_t{1000}, size_t{65535}, size_t{65536}, size_t{65537},
                              size_t{200'000}, size_t{400'000}}) {
        const File file(path, BFILE_Read);
        EXPECT_EQ(BFileSize(file), static_cast<int64_t>(text.size()));
        std::string all = readPart(file, 3);
        for (std::string got = readPart(file, part); !got.empty(); got = readPart(file, part)) {
            all += got;
        }
        EXPECT_EQ(all, text) << part;
        EXPECT_EQ(readPart(file, 1), "");
        EXPECT_EQ(BSeek(file, 0, 1), static_cast<int64_t>(text.size()));
    }
}

TEST(BufferedFile, SeeksInsideAndOutsideOfItsBuffer) {
    const ScratchDirectory scratch;
    const std::string text = longText();
    const File file(scratch.write("file", text), BFILE_Read);
    readPart(file, 100);
    const auto size = static_cast<int64_t>(text.size());
    int64_t position = 100;
    const struct {
        int64_t offset;
        int32_t origin;
    } seeks[] = {{0, 0},      {50, 0},       {10, 1},       {-20, 1},      {65536, 0}, {65535, 0},
                 {-65535, 1}, {131'072, 1},  {size - 5, 0}, {-200'000, 1}, {1, 0},     {size, 0},
                 {-1, 1},     {size + 1, 0}, {size + 9, 0}, {-30, 1}};
    for (const auto& seek : seeks) {
        position = seek.origin == 0 ? seek.offset : position + seek.offset;
        ASSERT_EQ(BSeek(file, seek.offset, seek.origin), position);
        const std::string expected =
            position < size ? text.substr(static_cast<size_t>(position), 20) : "";
        ASSERT_EQ(readPart(file, 20), expected) << position;
        position += static_cast<int64_t>(expected.size());
    }
}

TEST(BufferedFile, RefusesASeekAndStays) {
    const ScratchDirectory scratch;
    const File file(scratch.write("file", "0123456789"), BFILE_Read);
    EXPECT_EQ(readPart(file, 4), "0123");
    for (const auto& [offset, origin] : std::vector<std::pair<int64_t, int32_t>>{
             {-1, 0}, {-5, 1}, {0, 2}, {0, -1}, {INT64_MAX, 1}, {INT64_MIN, 1}}) {
        EXPECT_LT(BSeek(file, offset, origin), 0) << offset;
        EXPECT_EQ(BGetErrorCode(), EINVAL);
    }
    EXPECT_EQ(readPart(file, 2), "45");
}

TEST(BufferedFile, WritesWhatItIsGivenWhereItIsToldTo) {
    const ScratchDirectory scratch;
    const std::string path = scratch.path("file");
    const std::string text = longText();
    VORN_File* file = BOpenFile(path.c_str(), BFILE_Write);
    size_t done = 0;
    for (const size_t part : {size_t{1}, size_t{65535}, size_t{70'000}, size_t{0}}) {
        EXPECT_EQ(BWrite(file, text.data() + done, static_cast<int32_t>(part)),
                  static_cast<int32_t>(part));
        done += part;
        EXPECT_EQ(BFileSize(file), static_cast<int64_t>(done));
    }
    BWrite(file, text.data() + done, static_cast<int32_t>(text.size() - done));
    EXPECT_EQ(BSeek(file, 4, 0), 4);  // as for a length that is known at last
    EXPECT_EQ(BWrite(file, "late", 4), 4);
    EXPECT_EQ(BSeek(file, 2, 1), 10);
    EXPECT_EQ(BFileSize(file), static_cast<int64_t>(text.size()));
    const auto end = static_cast<int64_t>(text.size() + 2);
    EXPECT_EQ(BSeek(file, end, 0), end);
    EXPECT_EQ(BWrite(file, "behind zeros", 12), 12);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(BCommit(file));
    std::string expected = text + std::string("\0\0behind zeros", 14);
    expected.replace(4, 4, "late");
    EXPECT_EQ(scratch.read("file"), expected);
    BClose(file);
    EXPECT_EQ(scratch.read("file"), expected);
}

TEST(BufferedFile, IsOpenedForOneThing) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("file", "text");
    char byte = 0;
    VORN_File* reading = BOpenFile(path.c_str(), BFILE_Read);
    EXPECT_EQ(BWrite(reading, "x", 1), 0);
    EXPECT_EQ(BGetErrorCode(), EBADF);
    EXPECT_FALSE(BCommit(reading));
    EXPECT_EQ(BRead(reading, &byte, -1), 0);
    EXPECT_NE(BGetErrorCode(), 0);
    BClose(reading);
    VORN_File* writing = BOpenFile(path.c_str(), BFILE_Write);
    EXPECT_EQ(BRead(writing, &byte, 1), 0);
    EXPECT_EQ(BGetErrorCode(), EBADF);
    BClose(writing);
    EXPECT_EQ(BGetErrorCode(), 0);
    BClose(nullptr);
    EXPECT_EQ(scratch.read("file"), "text");
}

TEST(BufferedFile, ThatDoesNotOpenSaysWhy) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("file", "");
    const auto openError = [](const std::string& name, int32_t mode) {
        EXPECT_EQ(BOpenFile(name.c_str(), mode), nullptr);
        return BGetErrorCode();
    };
    EXPECT_EQ(openError(scratch.path("missing"), BFILE_Read), ENOENT);
    EXPECT_EQ(openError(scratch.path(), BFILE_Read), EISDIR);
    EXPECT_EQ(openError(path + "/below", BFILE_Write), ENOTDIR);
    EXPECT_EQ(openError(path, 3), EINVAL);
    EXPECT_EQ(BOpenFile(nullptr, BFILE_Read), nullptr);
    EXPECT_EQ(BGetErrorCode(), EINVAL);
    failAtEachAllocation([&](auto withFailure) {
        const auto [file, failed] =
            withFailure([&] { return BOpenFile(path.c_str(), BFILE_Read); });
        EXPECT_EQ(BGetErrorCode(), failed ? ENOMEM : 0);
        BClose(file);
    });
}

TEST(BufferedFile, ThatFoundNoRoomIsNeverPutInPlaceAndSaysSoAtTheLatestWhenItIsCommitted) {
    const ScratchDirectory scratch;
    const std::string path = scratch.write("file", "old");
    for (const size_t size : {size_t{9}, size_t{100'000}}) {
        const auto count = static_cast<int32_t>(size);
        VORN_File* file = BOpenFile(path.c_str(), BFILE_Write);
        {
            const FileLimit limit(4);
            const bool fits = size < 65536;  // into the buffer
            EXPECT_EQ(BWrite(file, longText(size).data(), count), fits ? count : 0);
            EXPECT_FALSE(fits && BCommit(file));
            EXPECT_EQ(BGetErrorCode(), EFBIG);
        }
        // There is room again, and the writer has not looked at the result.
        BWrite(file, "rest", 4);
        EXPECT_FALSE(BCommit(file));
        EXPECT_EQ(BGetErrorCode(), EFBIG);
        BClose(file);
        EXPECT_EQ(scratch.read("file"), "old");
    }
    const File full("/dev/full", BFILE_Write);
    EXPECT_EQ(BWrite(full, "x", 1), 1);
    EXPECT_FALSE(BCommit(full));
    EXPECT_EQ(BGetErrorCode(), ENOSPC);
}

}  // namespace
