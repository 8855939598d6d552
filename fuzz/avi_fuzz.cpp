// The preference string of the AVI savers. What could be read is written and read again, and must
// be the same.
#include <vorn/support.h>

#include <cstring>

#include "avi/preferences.h"
#include "fuzz/texts.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = textOf(data, size);
    vorn::AviOptions options{};
    int32_t rate = 0;
    if (vorn::readAviPreferences(text.c_str(), options, rate)) {
        vorn::AviOptions again{};
        int32_t againRate = 0;
        const char* written = vorn::writeAviPreferences(options, rate);
        expect(written == nullptr || vorn::readAviPreferences(written, again, againRate));
        expect(written == nullptr || (againRate == rate && again.fccHandler == options.fccHandler));
        const bool hasFormat = written != nullptr && options.lpFormat != nullptr;
        expect(!hasFormat ||
               (again.cbFormat == options.cbFormat &&
                std::memcmp(again.lpFormat, options.lpFormat, options.cbFormat) == 0));
        vorn::releaseAviBlocks(again);
    }
    vorn::releaseAviBlocks(options);
    return 0;
}
