#include "formats/bmp/bmp_header.h"

#include <vorn/types.h>

#include <algorithm>
#include <bit>

#include "formats/common/failure.h"
#include "formats/common/little_endian.h"

namespace bmp {
namespace {

using formats::Failure;
using formats::littleEndian;

constexpr size_t kFileHead = 14;
constexpr uint32_t kCoreHead = 12;  // the oldest form, with 16-bit sizes
constexpr uint32_t kInfoHead = 40;
constexpr uint32_t kHeadWithColorMasks = 52;
constexpr uint32_t kHeadWithAlphaMask = 56;
constexpr uint32_t kLargestHead = 124;

void readSize(Header& header, const std::vector<uint8_t>& head) {
    int64_t width = 0;
    int64_t height = 0;
    if (head.size() == kCoreHead) {
        width = littleEndian(&head[4], 2);
        height = littleEndian(&head[6], 2);
        header.bits = littleEndian(&head[10], 2);
    } else {
        width = static_cast<int32_t>(littleEndian(&head[4], 4));
        height = static_cast<int32_t>(littleEndian(&head[8], 4));
        header.bits = littleEndian(&head[14], 2);
    }
    header.topDown = height < 0;
    if (height < 0) height = -height;
    if (width < 1 || height < 1) throw Failure{formats::kDamaged};
    if (width > VORN_MAX_SIZE || height > VORN_MAX_SIZE) throw Failure{formats::kUnsupported};
    header.width = static_cast<int32_t>(width);
    header.height = static_cast<int32_t>(height);
}

bool isKnown(const Header& header) {
    switch (header.compression) {
        case kPlain:
            return header.bits == 1 || header.bits == 2 || header.bits == 4 || header.bits == 8 ||
                   header.bits == 16 || header.bits == 24 || header.bits == 32;
        case kRunLength8:
            return header.bits == 8 && !header.topDown;
        case kRunLength4:
            return header.bits == 4 && !header.topDown;
        case kBitFields:
        case kAlphaBitFields:
            return header.bits == 16 || header.bits == 32;
        default:
            return false;
    }
}

Field fieldOf(uint32_t mask) {
    if (mask == 0) return {};
    const auto shift = static_cast<uint32_t>(std::countr_zero(mask));
    const uint32_t most = mask >> shift;
    if ((most & (most + 1)) != 0) throw Failure{formats::kUnsupported};  // bits with gaps
    return {mask, shift, most};
}

// In the oldest 40-byte form the masks stand behind the head, in later ones they belong to it.
void readFields(Header& header, const std::vector<uint8_t>& head, formats::InputFile& file) {
    uint32_t masks[4] = {0xFF0000, 0xFF00, 0xFF, 0};
    if (header.bits == 16) {
        masks[0] = 0x7C00;
        masks[1] = 0x3E0;
        masks[2] = 0x1F;
    }
    if (header.compression == kBitFields || header.compression == kAlphaBitFields) {
        size_t count = head.size() >= kHeadWithAlphaMask ? 4 : 3;
        std::vector<uint8_t> bytes(16);
        if (head.size() >= kHeadWithColorMasks) {
            std::copy_n(&head[kInfoHead], count * 4, bytes.begin());
        } else {
            count = header.compression == kAlphaBitFields ? 4 : 3;
            file.readExactly(bytes.data(), count * 4);
        }
        for (size_t c = 0; c < 4; ++c) masks[c] = littleEndian(&bytes[4 * c], 4);
    }
    for (size_t c = 0; c < 4; ++c) header.fields[c] = fieldOf(masks[c]);
}

void readPalette(Header& header, const std::vector<uint8_t>& head, formats::InputFile& file) {
    const bool core = head.size() == kCoreHead;
    uint32_t count = head.size() >= kInfoHead ? littleEndian(&head[32], 4) : 0;
    const uint32_t most = 1u << header.bits;
    if (count == 0 || count > most) count = most;
    const uint32_t entryBytes = core ? 3 : 4;
    // Programs that save room write fewer entries than they say: the pixels' place tells.
    const size_t before = kFileHead + head.size();
    if (header.pixels > before)
        count = std::min(count, static_cast<uint32_t>(header.pixels - before) / entryBytes);
    std::vector<uint8_t> entries(size_t{count} * entryBytes);
    file.readExactly(entries.data(), entries.size());
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* blueGreenRed = &entries[i * entryBytes];
        header.palette.insert(header.palette.end(),
                              {blueGreenRed[2], blueGreenRed[1], blueGreenRed[0]});
    }
    if (header.palette.empty()) throw Failure{formats::kDamaged};
}

}  // namespace

Header readHeader(formats::InputFile& file) {
    std::vector<uint8_t> start(kFileHead + 4);
    if (file.read(start.data(), start.size()) != start.size() || start[0] != 'B' || start[1] != 'M')
        throw Failure{formats::kNotThisFormat};
    const uint32_t size = littleEndian(&start[kFileHead], 4);
    if (size != kCoreHead && (size < 16 || size > kLargestHead)) throw Failure{formats::kDamaged};
    std::vector<uint8_t> head(size);
    std::copy_n(&start[kFileHead], 4, head.begin());
    file.readExactly(&head[4], size - 4);

    Header header;
    header.pixels = littleEndian(&start[10], 4);
    readSize(header, head);
    if (size >= kInfoHead) {
        header.compression = littleEndian(&head[16], 4);
        header.xPerMetre = static_cast<int32_t>(littleEndian(&head[24], 4));
        header.yPerMetre = static_cast<int32_t>(littleEndian(&head[28], 4));
    }
    if (!isKnown(header)) throw Failure{formats::kUnsupported};
    if (header.bits <= 8)
        readPalette(header, head, file);
    else if (header.bits != 24)
        readFields(header, head, file);
    if (header.pixels < kFileHead + size) throw Failure{formats::kDamaged};
    return header;
}

}  // namespace bmp
