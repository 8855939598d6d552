#include <vorn/support.h>

#include <cstdlib>
#include <cstring>
#include <limits>

#include "avi/preferences.h"
#include "support/memory.h"

namespace vorn {
namespace {

// The numbers of the header: each stands behind the text before it.
struct HeaderNumber {
    const char* before;
    int base;
};
constexpr HeaderNumber kHeader[] = {{"VORN_AVI_1=x", 16},
                                    {":x", 16},
                                    {":", 10},
                                    {":", 10},
                                    {":", 10},
                                    {":x", 16},
                                    {":", 10},
                                    {":", 10},
                                    {":", 10},
                                    {":", 10},
                                    {":", 10}};
constexpr int kHeaderNumbers = std::size(kHeader);
constexpr int kFrameRateIndex = 9;
constexpr int kCheckIndex = 10;

// How many of the numbers could be read; the others are 0.
int readHeader(const char* text, uint32_t (&numbers)[kHeaderNumbers]) {
    std::memset(numbers, 0, sizeof numbers);
    for (int i = 0; i < kHeaderNumbers; ++i) {
        const size_t length = std::strlen(kHeader[i].before);
        int64_t number = 0;
        if (std::strncmp(text, kHeader[i].before, length) != 0) return i;
        text += length;
        if (!readNumber(text, kHeader[i].base, number)) return i;
        numbers[i] = static_cast<uint32_t>(number);
    }
    return kHeaderNumbers;
}

AviOptions optionsOf(const uint32_t (&numbers)[kHeaderNumbers]) {
    AviOptions options{};
    options.fccType = numbers[0];
    options.fccHandler = numbers[1];
    options.dwKeyFrameEvery = numbers[2];
    options.dwQuality = numbers[3];
    options.dwBytesPerSecond = numbers[4];
    options.dwFlags = numbers[5];
    options.cbFormat = numbers[6];
    options.cbParms = numbers[7];
    options.dwInterleaveEvery = numbers[8];
    return options;
}

// What stands between two marks.
struct Digits {
    const char* begin;
    const char* end;
};

// Finds the next two marks and moves behind them. False when one is missing or they are the wrong
// way round.
bool findDigits(const char*& text, Digits& digits) {
    const char* open = std::strchr(text, '<');
    const char* close = std::strchr(text, '>');
    if (open == nullptr || close == nullptr || close < open) return false;
    digits = {open + 1, close};
    text = close + 1;
    return true;
}

int digitValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

bool decode(const Digits& digits, uint8_t* out) {
    for (const char* at = digits.begin; at != digits.end; at += 2) {
        const int high = digitValue(at[0]);
        const int low = digitValue(at[1]);
        if (high < 0 || low < 0) return false;
        *out++ = static_cast<uint8_t>(16 * high + low);
    }
    return true;
}

// A new block of exactly `count` bytes, or null. The digits are counted first, so that the count
// of a hostile text is never allocated.
uint8_t* readBlock(const Digits& digits, uint32_t count) {
    if (static_cast<uint64_t>(digits.end - digits.begin) != 2 * uint64_t{count}) return nullptr;
    Owned<uint8_t> block(static_cast<uint8_t*>(AllocMemory(count, 0)));
    return block != nullptr && decode(digits, block.get()) ? block.release() : nullptr;
}

// Reads the blocks that the text has. False when one is broken.
bool readBlocks(const char* text, AviOptions& options) {
    Digits digits;
    if (!findDigits(text, digits)) return true;
    if (options.cbFormat != 0) {
        options.lpFormat = readBlock(digits, options.cbFormat);
        if (options.lpFormat == nullptr) return false;
    }
    if (!findDigits(text, digits) || options.cbParms == 0) return true;
    options.lpParms = readBlock(digits, options.cbParms);
    return options.lpParms != nullptr;
}

bool readValid(const char* text, AviOptions& options, int32_t& frameRate) {
    if (text == nullptr) {
        dblog("NO PREF STRING\n");
        return false;
    }
    dblog("GOT A FORMAT STRING = \"%s\"\n", text);
    uint32_t numbers[kHeaderNumbers];
    const int count = readHeader(text, numbers);
    const auto check = static_cast<int32_t>(numbers[kCheckIndex]);
    if (count != kHeaderNumbers || check != kPreferenceCheck) {
        dblog("Whats wrong? count=%d, check=%d\n", count, check);
        return false;
    }
    options = optionsOf(numbers);
    frameRate = static_cast<int32_t>(numbers[kFrameRateIndex]);
    return readBlocks(text, options);
}

AviOptions defaultOptions() {
    AviOptions options{};
    options.fccType = 0x73646976;     // "vids"
    options.fccHandler = 0x4356534D;  // "MSVC"
    options.dwKeyFrameEvery = 7;
    options.dwQuality = 6500;
    options.dwFlags = 8;  // the options are valid
    return options;
}

}  // namespace

bool readNumber(const char*& text, int base, int64_t& number) {
    char* end = nullptr;
    number = std::strtoll(text, &end, base);
    if (end == text || number < std::numeric_limits<int32_t>::min() ||
        number > std::numeric_limits<uint32_t>::max()) {
        return false;
    }
    text = end;
    return true;
}

void releaseAviBlocks(AviOptions& options) {
    FreeMemory(options.lpFormat);
    FreeMemory(options.lpParms);
    options.lpFormat = nullptr;
    options.lpParms = nullptr;
}

bool readAviPreferences(const char* text, AviOptions& options, int32_t& frameRate) {
    releaseAviBlocks(options);
    if (readValid(text, options, frameRate)) return true;
    releaseAviBlocks(options);
    options = defaultOptions();
    frameRate = kDefaultFrameRate;
    return false;
}

}  // namespace vorn
