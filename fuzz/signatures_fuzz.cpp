// The universal loader's signatures: the first line of the input is what a capability file says,
// the rest a file's head.
#include <vector>

#include "fuzz/texts.h"
#include "unv/signature.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = textOf(data, size);
    const size_t line = std::min(text.find('\n'), size);
    const std::vector<uint8_t> head(data + std::min(line + 1, size), data + size);
    const std::string signatures = text.substr(0, line);
    // No signature can pin down more bits than it has letters for.
    expect(vorn::bitsPinnedDown(signatures, head) <= 8 * signatures.size());
    return 0;
}
