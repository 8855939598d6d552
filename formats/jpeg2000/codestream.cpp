#include "formats/jpeg2000/codestream.h"

#include <vorn/types.h>

#include <vector>

#include "formats/common/big_endian.h"
#include "formats/common/failure.h"

namespace jpeg2000 {
namespace {

using formats::Failure;

constexpr uint32_t kStart = 0xFF4F;
constexpr uint32_t kSizeMarker = 0xFF51;
constexpr uint32_t kTilePart = 0xFF90;

constexpr int64_t kSizePlace = 2;  // of the size marker in the codestream
constexpr size_t kSizeBytes = 40;  // of the marker, up to the number of components
constexpr size_t kTileHead = 12;   // of a tile part
constexpr uint64_t kMostTiles = 65535;

uint32_t tilesIn(uint32_t from, uint32_t to, uint32_t size) {
    return static_cast<uint32_t>((uint64_t{to} - from + size - 1) / size);
}

// The tile parts that the file has, by tile.
class TileParts {
  public:
    explicit TileParts(size_t tiles) : parts_(tiles) {}

    void add(size_t tile, unsigned inAll) {
        if (tile >= parts_.size()) throw Failure{formats::kDamaged};
        ++parts_[tile].seen;
        if (inAll > 0) parts_[tile].inAll = inAll;
    }

    bool areComplete() const {
        for (const Tile& tile : parts_) {
            if (tile.seen == 0 || tile.seen < tile.inAll) return false;
        }
        return true;
    }

  private:
    struct Tile {
        unsigned seen = 0;
        unsigned inAll = 0;  // 0: the file doesn't say
    };
    std::vector<Tile> parts_;
};

// Behind the marker segments of the main header.
int64_t firstTilePart(formats::InputFile& file, int64_t place) {
    uint8_t head[4];
    place += kSizePlace;
    for (;;) {
        file.seek(place);
        file.readExactly(head, sizeof head);
        const uint32_t marker = formats::bigEndian(head, 2);
        const uint32_t length = formats::bigEndian(head + 2, 2);
        if (marker == kTilePart) return place;
        if (marker < 0xFF00 || length < 2) throw Failure{formats::kDamaged};
        place += 2 + length;
    }
}

}  // namespace

CodestreamSize readSize(formats::InputFile& file, int64_t place) {
    uint8_t head[kSizePlace + kSizeBytes];
    file.seek(place);
    file.readExactly(head, sizeof head);
    if (formats::bigEndian(head, 2) != kStart || formats::bigEndian(head + 2, 2) != kSizeMarker)
        throw Failure{formats::kDamaged};
    uint32_t numbers[8];
    for (size_t i = 0; i < 8; ++i) numbers[i] = formats::bigEndian(head + 8 + 4 * i, 4);
    CodestreamSize size{};
    size.x1 = numbers[0];
    size.y1 = numbers[1];
    size.x0 = numbers[2];
    size.y0 = numbers[3];
    size.tileWidth = numbers[4];
    size.tileHeight = numbers[5];
    size.tileX = numbers[6];
    size.tileY = numbers[7];
    size.components = formats::bigEndian(head + 40, 2);
    if (size.x1 <= size.x0 || size.y1 <= size.y0 || size.tileX > size.x0 || size.tileY > size.y0 ||
        uint64_t{size.tileX} + size.tileWidth <= size.x0 ||
        uint64_t{size.tileY} + size.tileHeight <= size.y0 || size.components < 1)
        throw Failure{formats::kDamaged};
    size.tilesAcross = tilesIn(size.tileX, size.x1, size.tileWidth);
    size.tilesDown = tilesIn(size.tileY, size.y1, size.tileHeight);
    if (uint64_t{size.tilesAcross} * size.tilesDown > kMostTiles) throw Failure{formats::kDamaged};
    if (size.components > VORN_MAX_CHANNELS || size.x1 > INT32_MAX || size.y1 > INT32_MAX)
        throw Failure{formats::kUnsupported};
    return size;
}

void checkTiles(formats::InputFile& file, int64_t place, const CodestreamSize& size) {
    TileParts parts(size_t{size.tilesAcross} * size.tilesDown);
    const int64_t end = file.size();
    uint8_t head[kTileHead];
    for (place = firstTilePart(file, place); place < end;) {
        file.seek(place);
        if (file.read(head, kTileHead) != kTileHead || formats::bigEndian(head, 2) != kTilePart)
            break;
        parts.add(formats::bigEndian(head + 4, 2), head[11]);
        const uint32_t length = formats::bigEndian(head + 6, 4);
        if (length == 0) break;  // it is the last and reaches to the end
        if (length < kTileHead || length > end - place) throw Failure{formats::kDamaged};
        place += length;
    }
    if (!parts.areComplete()) throw Failure{formats::kDamaged};
}

}  // namespace jpeg2000
