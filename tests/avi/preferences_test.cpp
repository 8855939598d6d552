#include "avi/preferences.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/memory.h"
#include "tests/scratch_home.h"
#include "tests/support/failing_memory.h"

namespace {

using namespace vorn;
using Bytes = std::vector<uint8_t>;

// A record and a rate that hold something else than what a test expects, blocks included.
struct Preferences {
    Preferences() {
        options.lpFormat = allocCleared<uint8_t>(3).release();
        options.lpParms = allocCleared<uint8_t>(5).release();
        options.cbFormat = 3;
    }
    ~Preferences() { releaseAviBlocks(options); }
    Preferences(const Preferences&) = delete;
    Preferences& operator=(const Preferences&) = delete;

    bool read(const char* text) { return readAviPreferences(text, options, rate); }
    bool read(const std::string& text) { return read(text.c_str()); }

    Bytes format() const { return bytes(options.lpFormat, options.cbFormat); }
    Bytes parms() const { return bytes(options.lpParms, options.cbParms); }
    static Bytes bytes(const uint8_t* block, uint32_t count) {
        return block ? Bytes(block, block + count) : Bytes{};
    }

    AviOptions options{};
    int32_t rate = -1;
};

// What was read, written again.
std::string written(const Preferences& read) {
    return writeAviPreferences(read.options, read.rate);
}

void expectDefaults(const Preferences& read) {
    EXPECT_EQ(written(read), "VORN_AVI_1=x73646976:x4356534d:7:6500:0:x8:0:0:0:15:62767<><>");
    EXPECT_TRUE(!read.options.lpFormat && !read.options.lpParms);
    EXPECT_EQ(read.options.cbFormat + read.options.cbParms, 0u);
}

std::string header(const std::string& formatBytes, const std::string& parmsBytes) {
    return "VORN_AVI_1=x73646976:xABCDEF01:1:2:3:x10:" + formatBytes + ":" + parmsBytes +
           ":4:25:62767";
}

std::string logOf(const char* text) {
    const ScopedVariable wanted("VORN_LOG", "1");
    Preferences preferences;
    testing::internal::CaptureStderr();
    preferences.read(text);
    return testing::internal::GetCapturedStderr();
}

TEST(AviPreferences, WrittenAndReadBackAreTheSame) {
    uint8_t format[] = {0x0A, 0x1B, 0x2C, 0xFF};
    uint8_t parms[] = {0x00, 0x9F};
    const AviOptions options{0x73646976, 0xFFFFFFFF, 0x80000000, 10000, 4294967295u, 0, format,
                             4,          parms,      2,          9};
    const std::string text = writeAviPreferences(options, -30);
    ASSERT_EQ(text,
              "VORN_AVI_1=x73646976:xffffffff:-2147483648:10000:-1:x0:4:2:9:-30:62767"
              "<0A1B2CFF><009F>");
    Preferences back;
    ASSERT_TRUE(back.read(text));
    EXPECT_EQ(written(back), text);
    // Numbers are read as scanf does it.
    ASSERT_TRUE(back.read("VORN_AVI_1=x 1F:x0xfF:+7: 6500:4294967295:x8:0:0:-1:\t15:62767rest"));
    EXPECT_EQ(written(back), "VORN_AVI_1=x1f:xff:7:6500:-1:x8:0:0:-1:15:62767<><>");
    EXPECT_EQ(back.options.dwInterleaveEvery, 0xFFFFFFFFu);
    EXPECT_TRUE(!back.options.lpFormat && !back.options.lpParms);
}

TEST(AviPreferences, BadHeadersGiveTheDefaultsAndSayWhyInTheLog) {
    const struct {
        const char* text;
        const char* reason;
    } headers[] = {
        {"", "count=0, check=0"},
        {"vorn_avi_1=x1:x2:3:4:5:x6:0:0:9:10:62767", "count=0, check=0"},
        {"VORN_AVI_1=1:x2:3:4:5:x6:0:0:9:10:62767", "count=0, check=0"},
        {"VORN_AVI_1=x1:x2:3:4:5:6:0:0:9:10:62767", "count=5, check=0"},
        {"VORN_AVI_1=x1:x2:3:4:5:x6:0:0:9:10", "count=10, check=0"},
        {"VORN_AVI_1=x1:x2:3:4:5:x6:0:0:9:10:12345", "count=11, check=12345"},
        {"VORN_AVI_1=x1:x2:3:4:5:x6:0:0:9:10:-2769", "count=11, check=-2769"},
        {"VORN_AVI_1=x1:x2:3:4294967296:5:x6:0:0:9:10:62767", "count=3, check=0"},
        {"VORN_AVI_1=x1ffffffff:x2:3:4:5:x6:0:0:9:10:62767", "count=0, check=0"},
        {"VORN_AVI_1=x1:x2:-99999999999999999999999:4:5:x6:0:0:9:10:62767", "count=2, check=0"},
    };
    for (const auto& [text, reason] : headers) {
        Preferences read;
        EXPECT_FALSE(read.read(text)) << text;
        expectDefaults(read);
        EXPECT_EQ(logOf(text), std::string("GOT A FORMAT STRING = \"") + text +
                                   "\"\nWhats wrong? " + reason + "\n");
    }
    Preferences read;
    EXPECT_FALSE(read.read(nullptr));
    expectDefaults(read);
    EXPECT_EQ(logOf(nullptr), "NO PREF STRING\n");
}

TEST(AviPreferences, BlocksThatTheTextDoesntHaveKeepTheirCounts) {
    for (const char* rest : {"", "<", ">", "><", ">0A0B<", "<0A0B"}) {
        Preferences read;
        EXPECT_TRUE(read.read(header("2", "4294967295") + rest)) << rest;
        EXPECT_TRUE(!read.options.lpFormat && !read.options.lpParms);
        EXPECT_EQ(read.options.cbFormat, 2u);
        EXPECT_EQ(read.options.cbParms, 0xFFFFFFFFu);
        EXPECT_EQ(read.rate, 25);
    }
    for (const char* rest : {"<0A0B>", "<0A0B><", "<0A0B>>0C<", "<0A0B>0C>"}) {
        Preferences read;
        EXPECT_TRUE(read.read(header("2", "1") + rest)) << rest;
        EXPECT_EQ(read.format(), (Bytes{0x0A, 0x0B}));
        EXPECT_EQ(read.options.lpParms, nullptr);
        EXPECT_EQ(read.options.cbParms, 1u);
    }
    // With the count 0 it doesn't matter what stands between the marks, nor around them.
    Preferences read;
    EXPECT_TRUE(read.read(header("0", "1") + " <what?> and <C4>"));
    EXPECT_EQ(read.options.lpFormat, nullptr);
    EXPECT_EQ(read.parms(), Bytes{0xC4});
    EXPECT_TRUE(read.read(header("1", "0") + "<C4><what?>"));
    EXPECT_EQ(read.format(), Bytes{0xC4});
    EXPECT_EQ(read.options.lpParms, nullptr);
}

TEST(AviPreferences, BrokenBlocksGiveTheDefaults) {
    const std::string good = "<0A1B2C3D>";
    ASSERT_TRUE(Preferences().read(header("4", "4") + good + good));
    for (const char* bad :
         {"<>", "<0A1B2C3>", "<0A1B2C3D0>", "<0a1b2c3d>", "<0A1B2C3G>", "<0A1B2C3/>", "<0A1B2C3:>",
          "<0A1B2C3@>", "<0A1B 2C3>", "<0A1B2C\xff\xff>", "<<A1B2C3D>", "<+A-B2C3D>"}) {
        for (const std::string& text : {bad + good, good + bad}) {
            Preferences read;
            EXPECT_FALSE(read.read(header("4", "4") + text)) << text;
            expectDefaults(read);
        }
    }
}

// Doubled in 32 bits, most of these counts are the number of digits that is there.
TEST(AviPreferences, HugeCountsAreNeverAllocated) {
    for (const char* count :
         {"2147483648", "2147483650", "-2147483648", "-2147483646", "4294967295", "-1"}) {
        for (const char* digits : {"<>", "<0A0B>", "<0A>"}) {
            Preferences read;
            failAllocation(0);
            EXPECT_FALSE(read.read(header(count, "0") + digits)) << count;
            EXPECT_FALSE(read.read(header("0", count) + "<>" + digits)) << count;
            EXPECT_EQ(failAllocation(0), 0u) << count;
            expectDefaults(read);
        }
    }
}

TEST(AviPreferences, ShortMemoryGivesTheDefaults) {
    failAtEachAllocation([](auto run) {
        Preferences preferences;
        const auto [read, failed] =
            run([&] { return preferences.read(header("1", "1") + "<0A><0B>"); });
        EXPECT_EQ(read, !failed);
        if (failed) expectDefaults(preferences);
    });
}

TEST(AviPreferences, FitInto4096BytesOrAreNotWritten) {
    std::vector<uint8_t> bytes(3000, 0xAB);
    AviOptions options{};
    options.lpFormat = bytes.data();
    options.cbFormat = 1000;
    options.lpParms = bytes.data();
    options.cbParms = 1000;
    const std::string text = writeAviPreferences(options, 15);
    const size_t headerLength = text.find('<');
    // All the room that is left: the header, the digits and ten more.
    options.cbParms = static_cast<uint32_t>((4096 - 10 - headerLength) / 2 - 1000);
    const char* longest = writeAviPreferences(options, 15);
    ASSERT_NE(longest, nullptr);
    Preferences back;
    EXPECT_TRUE(back.read(longest));
    EXPECT_EQ(back.parms().size(), options.cbParms);
    ++options.cbParms;
    EXPECT_EQ(writeAviPreferences(options, 15), nullptr);
    for (uint32_t count : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        options.cbFormat = options.cbParms = count;
        EXPECT_EQ(writeAviPreferences(options, 15), nullptr);
    }
    // Without their blocks the counts are written as 0.
    options.lpFormat = options.lpParms = nullptr;
    EXPECT_STREQ(writeAviPreferences(options, 15), "VORN_AVI_1=x0:x0:0:0:0:x0:0:0:0:15:62767<><>");
}

}  // namespace
