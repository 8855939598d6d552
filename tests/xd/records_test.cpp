#include <gtest/gtest.h>
#include <vorn/xd.h>

#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kUntouched = 0xEE;

// The record of `size` bytes that a descriptor makes of a file. Blocks of exactly these sizes, so
// that a checker of addresses sees the first byte too much.
Bytes recordOf(const char* descriptor, const Bytes& file, size_t size, int expected) {
    Bytes record(size, kUntouched);
    EXPECT_EQ(XD_CopyFileToStruct(descriptor, file.data(), 0, record.data()), expected)
        << descriptor;
    return record;
}

Bytes fileOf(const char* descriptor, const Bytes& record, size_t size, int expected) {
    Bytes file(size, kUntouched);
    EXPECT_EQ(XD_CopyStructToFile(descriptor, record.data(), 0, file.data()), expected)
        << descriptor;
    return file;
}

TEST(Records, FieldsAreAlignedInMemoryAndPackedInTheFile) {
    const uint8_t gap = kUntouched;
    EXPECT_EQ(recordOf("+L W B", {0, 0, 1, 2, 3, 4, 5}, 7, 7), (Bytes{2, 1, 0, 0, 4, 3, 5}));
    EXPECT_EQ(recordOf("-B L", {9, 1, 2, 3, 4}, 8, 8), (Bytes{9, gap, gap, gap, 1, 2, 3, 4}));
    EXPECT_EQ(recordOf("+B[3]P[2]W", {1, 2, 3, 7, 7, 5, 6}, 6, 6), (Bytes{1, 2, 3, gap, 6, 5}));
    EXPECT_EQ(recordOf("-bD", {9, 4, 3, 2, 1, 8, 7, 6, 5}, 16, 16),
              (Bytes{9, gap, gap, gap, gap, gap, gap, gap, 1, 2, 3, 4, 5, 6, 7, 8}));

    EXPECT_EQ(fileOf("+L W B", {2, 1, 0, 0, 4, 3, 5}, 7, 7), (Bytes{0, 0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(fileOf("-B L", {9, 0, 0, 0, 1, 2, 3, 4}, 5, 8), (Bytes{9, 1, 2, 3, 4}));
    EXPECT_EQ(fileOf("+B[3]P[2]W", {1, 2, 3, 0, 6, 5}, 7, 6), (Bytes{1, 2, 3, 0, 0, 5, 6}));
    for (const char* descriptor : {"+wpLFd", "+W\tP\r\nl F\n"}) {
        const bool whole = descriptor[1] == 'W';
        const Bytes record = {2, 1, gap, gap, 6, 5, 4, 3, 10, 9, 8, 7};
        EXPECT_EQ(recordOf(descriptor, {1, 2, 0, 3, 4, 5, 6, 7, 8, 9, 10}, 12, whole ? 12 : 0),
                  record);
        EXPECT_EQ(fileOf(descriptor, record, 11, whole ? 12 : 0),
                  (Bytes{1, 2, 0, 3, 4, 5, 6, 7, 8, 9, 10}));
    }
    EXPECT_EQ(fileOf("-F", {1, 2, 3, 4}, 4, 4), (Bytes{4, 3, 2, 1}));
    EXPECT_EQ(fileOf("-D[2]", Bytes(16, 3), 16, 16), Bytes(16, 3));
}

TEST(Records, PositionsCountFromTheRecordNotFromAddressZero) {
    Bytes block(10, kUntouched);
    const Bytes file{9, 1, 2, 3, 4};
    EXPECT_EQ(XD_CopyFileToStruct("-BL", file.data(), 0, &block[1]), 8);
    EXPECT_EQ(block[1], 9);
    EXPECT_EQ(Bytes(&block[5], &block[9]), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(block[9], kUntouched);
    Bytes back(5);
    EXPECT_EQ(XD_CopyStructToFile("-BL", &block[1], 0, back.data()), 8);
    EXPECT_EQ(back, file);
}

TEST(Records, BadPlaceEndsTheCopyAndGivesZero) {
    for (const char* descriptor : {"", "BL", " +B", "*B"}) {
        EXPECT_EQ(recordOf(descriptor, {1}, 1, 0), Bytes{kUntouched});
        EXPECT_EQ(fileOf(descriptor, {1}, 1, 0), Bytes{kUntouched});
    }
    EXPECT_EQ(XD_CopyFileToStruct(nullptr, nullptr, 0, nullptr), 0);
    for (const char* descriptor : {"+Bf", "+Bd", "+B\v", "+B [2]", "+B]", "+B[1 ]", "+B[1;]"}) {
        EXPECT_EQ(recordOf(descriptor, {1}, 1, 0), Bytes{1});
        EXPECT_EQ(fileOf(descriptor, {1}, 1, 0), Bytes{1});
    }
}

TEST(Records, CountsMaySkipFieldsAndAreTakenModulo65536) {
    EXPECT_EQ(recordOf("+B L[0] D[] p[0] B", {1, 2}, 2, 2), (Bytes{1, 2}));
    EXPECT_EQ(recordOf("+", {}, 0, 0), Bytes{});
    EXPECT_EQ(recordOf("+B[65536]B[65538]", {1, 2}, 2, 2), (Bytes{1, 2}));
    EXPECT_EQ(recordOf("+B[0000000000000000000000002]", {1, 2}, 2, 2), (Bytes{1, 2}));
    EXPECT_EQ(recordOf("+B[-1]", {1}, 1, 0), Bytes{kUntouched});
    // What stands behind the digits belongs to the next field.
    EXPECT_EQ(recordOf("-B[2W", {1, 2, 3, 4}, 4, 4), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(recordOf("-B[2", {1, 2}, 2, 2), (Bytes{1, 2}));
}

TEST(Records, AboveTheResultsRangeAreCopiedWhole) {
    Bytes file(40000);
    for (size_t i = 0; i < file.size(); ++i) file[i] = static_cast<uint8_t>(i % 251);
    EXPECT_EQ(recordOf("-B[40000]", file, file.size(), 40000 - 65536), file);
    EXPECT_EQ(recordOf("+P[60000]P[60000]W", Bytes(120002, 3), 2, 2), (Bytes{3, 3}));
}

}  // namespace
