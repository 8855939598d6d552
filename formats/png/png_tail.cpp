#include "formats/png/png_tail.h"

#include <algorithm>
#include <cstring>

#include "formats/common/big_endian.h"

namespace png {
namespace {

using formats::bigEndian;

constexpr int64_t kReach = int64_t{128} << 10;
constexpr size_t kFrameBytes = 12;  // of a chunk: length, kind, checksum
constexpr uint8_t kEnd[] = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};

bool isLetter(uint8_t byte) { return (byte | 0x20) >= 'a' && (byte | 0x20) <= 'z'; }

// Pixels are no such chunk: their kind begins with a capital. Few bytes are 0, as the first one of
// a length that is in reach is.
bool isFurtherChunk(const uint8_t* chunk, size_t bytes) {
    return chunk[0] == 0 && bigEndian(chunk, 4) == bytes - kFrameBytes && chunk[4] >= 'a' &&
           std::all_of(chunk + 4, chunk + 8, isLetter);
}

}  // namespace

// Chunks tell their length at their start, so from the end each is found as what reaches just to
// the one behind it. Walking through the file from its start would mean to read all pixels.
std::vector<uint8_t> chunksBehindPixels(formats::InputFile& file) {
    const int64_t size = file.size();
    std::vector<uint8_t> bytes(static_cast<size_t>(std::min(size, kReach)));
    if (bytes.size() < sizeof kEnd) return {};
    file.seek(size - static_cast<int64_t>(bytes.size()));
    file.readExactly(bytes.data(), bytes.size());
    bytes.resize(bytes.size() - sizeof kEnd);
    if (std::memcmp(bytes.data() + bytes.size(), kEnd, sizeof kEnd) != 0) return {};
    size_t first = bytes.size();
    for (size_t at = bytes.size(); at-- > 0;) {
        if (first - at >= kFrameBytes && isFurtherChunk(&bytes[at], first - at)) first = at;
    }
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(first));
    return bytes;
}

}  // namespace png
