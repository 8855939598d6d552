#include "formats/heif/heif_boxes.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>

namespace heif {
namespace {

constexpr int kDeepest = 4;  // a grid of overlays of ...
constexpr size_t kHvccColors = 16;
constexpr size_t kAv1cColors = 2;

// Reads numbers, most significant byte first. Beyond the end there are only zeros.
class Reader {
  public:
    explicit Reader(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    bool atEnd() const { return bytes_.empty(); }

    uint64_t number(size_t count) {
        uint64_t value = 0;
        for (const uint8_t byte : take(count)) value = value << 8 | byte;
        return value;
    }

    std::span<const uint8_t> take(uint64_t count) {
        const auto part = bytes_.first(std::min<uint64_t>(count, bytes_.size()));
        bytes_ = bytes_.subspan(part.size());
        return part;
    }

    std::span<const uint8_t> rest() const { return bytes_; }

  private:
    std::span<const uint8_t> bytes_;
};

struct Box {
    std::string_view type;
    std::span<const uint8_t> content;
};

Box nextBox(Reader& reader) {
    const size_t whole = reader.rest().size();
    uint64_t size = reader.number(4);
    const auto name = reader.take(4);
    if (size == 1) size = reader.number(8);
    const size_t head = whole - reader.rest().size();
    const uint64_t content = size == 0 ? whole : size < head ? 0 : size - head;
    return {{reinterpret_cast<const char*>(name.data()), name.size()}, reader.take(content)};
}

// All boxes of a type.
std::vector<std::span<const uint8_t>> boxesOf(std::span<const uint8_t> bytes,
                                              std::string_view type) {
    std::vector<std::span<const uint8_t>> found;
    for (Reader reader(bytes); !reader.atEnd();) {
        const Box box = nextBox(reader);
        if (box.type == type) found.push_back(box.content);
    }
    return found;
}

std::span<const uint8_t> boxOf(std::span<const uint8_t> bytes, std::string_view type) {
    const auto found = boxesOf(bytes, type);
    return found.empty() ? std::span<const uint8_t>{} : found[0];
}

// Of a codec's head: whether there are colours. Nothing for other properties.
std::optional<bool> greyOf(const Box& box) {
    if (box.type == "hvcC" && box.content.size() > kHvccColors)
        return (box.content[kHvccColors] & 3) == 0;
    if (box.type == "av1C" && box.content.size() > kAv1cColors)
        return (box.content[kAv1cColors] & 0x10) != 0;
    return std::nullopt;
}

class Items {
  public:
    explicit Items(const std::vector<uint8_t>& file) {
        Reader meta(boxOf(file, "meta"));
        meta.take(4);  // version and flags
        properties_ = boxOf(meta.rest(), "iprp");
        references_ = boxOf(meta.rest(), "iref");
        for (Reader reader(boxOf(properties_, "ipco")); !reader.atEnd();)
            grey_.push_back(greyOf(nextBox(reader)));
    }

    bool isGrey(uint64_t item, int depth = 0) const {
        if (const auto own = ofProperties(item)) return *own;
        const auto tile = firstTile(item);
        return tile && depth < kDeepest && isGrey(*tile, depth + 1);
    }

  private:
    std::optional<bool> ofProperties(uint64_t item) const {
        for (const auto box : boxesOf(properties_, "ipma")) {
            Reader reader(box);
            const size_t idBytes = reader.number(1) < 1 ? 2 : 4;
            const size_t indexBytes = (reader.number(3) & 1) != 0 ? 2 : 1;
            const uint64_t essential = indexBytes == 2 ? 0x8000 : 0x80;
            for (uint64_t entries = reader.number(4); entries > 0 && !reader.atEnd(); --entries) {
                const bool wanted = reader.number(idBytes) == item;
                for (uint64_t count = reader.number(1); count > 0; --count) {
                    const uint64_t index = reader.number(indexBytes) & ~essential;  // from 1
                    if (wanted && index > 0 && index <= grey_.size() && grey_[index - 1])
                        return grey_[index - 1];
                }
            }
        }
        return std::nullopt;
    }

    std::optional<uint64_t> firstTile(uint64_t item) const {
        Reader head(references_);
        const size_t idBytes = head.number(1) == 0 ? 2 : 4;
        head.take(3);
        for (const auto box : boxesOf(head.rest(), "dimg")) {
            Reader reader(box);
            if (reader.number(idBytes) == item && reader.number(2) > 0)
                return reader.number(idBytes);
        }
        return std::nullopt;
    }

    std::span<const uint8_t> properties_;
    std::span<const uint8_t> references_;
    std::vector<std::optional<bool>> grey_;  // of each property
};

}  // namespace

bool isGrey(const std::vector<uint8_t>& file, uint32_t item) { return Items(file).isGrey(item); }

}  // namespace heif
