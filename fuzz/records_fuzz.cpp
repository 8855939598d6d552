// Descriptors of records. The input is a descriptor; the file and the record are as large as it
// says, and not a byte larger.
#include <vorn/xd.h>

#include <vector>

#include "fuzz/texts.h"

namespace {

struct Sizes {
    size_t file = 0;
    size_t memory = 0;
};

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }

// How much a descriptor moves until its end or its first mistake. Rooms that it needs are counted
// here in the plainest way: letter by letter, field by field.
Sizes sizesOf(const std::string& descriptor) {
    Sizes sizes;
    for (size_t at = 1; at < descriptor.size();) {
        const char letter = descriptor[at++];
        if (std::string(" \t\r\n").find(letter) != std::string::npos) continue;
        const size_t kind = std::string("BbWwLlFDPp").find(letter);
        if (kind == std::string::npos) break;
        constexpr size_t kBytes[] = {1, 1, 2, 2, 4, 4, 4, 8, 1, 1};
        const size_t bytes = kBytes[kind];
        unsigned count = 1;
        if (at < descriptor.size() && descriptor[at] == '[') {
            count = 0;
            for (++at; at < descriptor.size() && isDigit(descriptor[at]); ++at)
                count = (count * 10 + static_cast<unsigned>(descriptor[at] - '0')) & 0xFFFF;
            if (at < descriptor.size() && descriptor[at] == ']') ++at;
        }
        for (; count > 0; --count) {
            sizes.file += bytes;
            if (letter == 'P' || letter == 'p') continue;
            while (sizes.memory % bytes != 0) ++sizes.memory;
            sizes.memory += bytes;
        }
    }
    return sizes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string descriptor = textOf(data, size).c_str();  // up to the first 0
    if (descriptor.size() > 64) return 0;
    const Sizes sizes = sizesOf(descriptor);
    std::vector<uint8_t> file(sizes.file);
    for (size_t i = 0; i < file.size(); ++i) file[i] = static_cast<uint8_t>(i * 37 + 11);
    std::vector<uint8_t> record(sizes.memory);
    const int16_t filled = XD_CopyFileToStruct(descriptor.c_str(), file.data(), 0, record.data());
    std::vector<uint8_t> again(sizes.file, 0xEE);
    const int16_t taken = XD_CopyStructToFile(descriptor.c_str(), record.data(), 0, again.data());
    expect(filled == taken);
    expect(filled == 0 || filled == static_cast<int16_t>(sizes.memory));
    // What was written is what was read, pads apart, which are written as 0.
    if (filled == 0 || descriptor.find_first_of("Pp") != std::string::npos) return 0;
    expect(again == file);
    return 0;
}
