#include "formats/common/exif.h"

#include <vorn/tags.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <optional>

#include "formats/common/utf8.h"

namespace formats {

const TiffTextField kTiffTextFields[kTiffTextFieldCount] = {
    {ITAG_DocumentName, 269}, {ITAG_Description, 270}, {ITAG_Make, 271},
    {ITAG_Model, 272},        {ITAG_PageName, 285},    {ITAG_Software, 305},
    {ITAG_DateTime, 306},     {ITAG_Artist, 315},      {ITAG_HostComputer, 316}};

namespace {

// The orientation of each EXIF number, from 1.
constexpr int32_t kOrientations[] = {0, 4, 2, 6, 7, 3, 5, 1};

constexpr uint16_t kOrientationTag = 274;
constexpr uint16_t kXResolutionTag = 282;
constexpr uint16_t kYResolutionTag = 283;
constexpr uint16_t kUnitTag = 296;
constexpr uint32_t kNoUnit = 1;
constexpr uint32_t kCentimetres = 3;
constexpr double kCentimetresPerInch = 2.54;

enum Type : uint16_t { kAscii = 2, kShort = 3, kLong = 4, kRational = 5, kSignedLong = 9 };

constexpr size_t kHeadSize = 8;
constexpr size_t kEntrySize = 12;
constexpr size_t kSegmentLimit = 65000;  // a block has to fit a JPEG segment

class Block {
  public:
    Block(const uint8_t* bytes, size_t size) : bytes_(bytes), size_(size) {
        if (size_ < kHeadSize) return;
        const bool little = std::memcmp(bytes_, "II*\0", 4) == 0;
        const bool big = std::memcmp(bytes_, "MM\0*", 4) == 0;
        bigEndian_ = big;
        if (little || big) readDirectory(number(4, 4));
    }

    std::optional<uint32_t> integer(uint16_t tag) const {
        const auto entry = find(tag);
        if (!entry) return std::nullopt;
        const uint32_t type = number(*entry + 2, 2);
        if (type == kShort) return number(*entry + 8, 2);
        if (type == kLong || type == kSignedLong) return number(*entry + 8, 4);
        return std::nullopt;
    }

    // Some programs write whole numbers where fractions belong.
    double rational(uint16_t tag) const {
        if (const auto whole = integer(tag)) return *whole;
        const auto entry = find(tag);
        if (!entry || number(*entry + 2, 2) != kRational) return 0;
        const size_t place = number(*entry + 8, 4);
        if (place > size_ || size_ - place < 8) return 0;
        const uint32_t divisor = number(place + 4, 4);
        return divisor ? static_cast<double>(number(place, 4)) / divisor : 0;
    }

    std::string text(uint16_t tag) const {
        const auto entry = find(tag);
        if (!entry || number(*entry + 2, 2) != kAscii) return {};
        const size_t length = number(*entry + 4, 4);
        const size_t place = length <= 4 ? *entry + 8 : number(*entry + 8, 4);
        if (place > size_ || length > size_ - place) return {};
        const auto* first = reinterpret_cast<const char*>(bytes_ + place);
        return {first, std::find(first, first + length, '\0')};
    }

  private:
    uint32_t number(size_t place, size_t bytes) const {
        uint32_t value = 0;
        for (size_t i = 0; i < bytes; ++i)
            value = value << 8 | bytes_[place + (bigEndian_ ? i : bytes - 1 - i)];
        return value;
    }

    void readDirectory(size_t place) {
        if (place > size_ || size_ - place < 2) return;
        const size_t room = (size_ - place - 2) / kEntrySize;
        count_ = std::min<size_t>(number(place, 2), room);
        entries_ = place + 2;
    }

    std::optional<size_t> find(uint16_t tag) const {
        for (size_t i = 0; i < count_; ++i) {
            if (number(entries_ + i * kEntrySize, 2) == tag) return entries_ + i * kEntrySize;
        }
        return std::nullopt;
    }

    const uint8_t* bytes_;
    size_t size_;
    bool bigEndian_ = false;
    size_t entries_ = 0;
    size_t count_ = 0;
};

int32_t dotsPerInch(const Block& block, uint16_t tag) {
    const bool metric = block.integer(kUnitTag).value_or(2) == kCentimetres;
    const double value = block.rational(tag) * (metric ? kCentimetresPerInch : 1);
    return value >= 1 && value < 1e6 ? static_cast<int32_t>(std::lround(value)) : 0;
}

// Collects the entries of a directory, in the order of their tags, and what lies behind it.
class Writer {
  public:
    void add(uint16_t tag, Type type, std::vector<uint8_t> value, uint32_t count) {
        entries_.push_back({tag, type, count, std::move(value)});
    }
    void addShort(uint16_t tag, int32_t value) {
        add(tag, kShort, {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)}, 1);
    }
    void addRational(uint16_t tag, int32_t value) {
        std::vector<uint8_t> bytes;
        put(bytes, static_cast<uint32_t>(value), 4);
        put(bytes, 1, 4);
        add(tag, kRational, bytes, 1);
    }
    void addText(uint16_t tag, const std::string& value) {
        std::vector<uint8_t> bytes(value.begin(), value.end());
        bytes.push_back(0);
        const auto count = static_cast<uint32_t>(bytes.size());
        add(tag, kAscii, std::move(bytes), count);
    }
    bool isEmpty() const { return entries_.empty(); }

    std::vector<uint8_t> block() {
        std::sort(entries_.begin(), entries_.end(),
                  [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
        std::vector<uint8_t> head{'I', 'I', '*', 0, kHeadSize, 0, 0, 0};
        std::vector<uint8_t> behind;
        const size_t start = kHeadSize + 2 + entries_.size() * kEntrySize + 4;
        put(head, static_cast<uint32_t>(entries_.size()), 2);
        for (Entry& entry : entries_) {
            put(head, entry.tag, 2);
            put(head, entry.type, 2);
            put(head, entry.count, 4);
            if (entry.value.size() > 4) {
                put(head, static_cast<uint32_t>(start + behind.size()), 4);
                behind.insert(behind.end(), entry.value.begin(), entry.value.end());
                behind.resize((behind.size() + 1) & ~size_t{1});
            } else {
                entry.value.resize(4);
                head.insert(head.end(), entry.value.begin(), entry.value.end());
            }
        }
        put(head, 0, 4);  // no further directory
        head.insert(head.end(), behind.begin(), behind.end());
        return head;
    }

  private:
    struct Entry {
        uint16_t tag;
        Type type;
        uint32_t count;
        std::vector<uint8_t> value;
    };

    static void put(std::vector<uint8_t>& bytes, uint32_t value, int count) {
        for (int i = 0; i < count; ++i) bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
    }

    std::vector<Entry> entries_;
};

}  // namespace

int32_t orientationFromExif(int32_t exif) {
    return exif >= 1 && exif <= 8 ? kOrientations[exif - 1] : 0;
}

int32_t exifFromOrientation(int32_t orientation) {
    const auto* found = std::find(std::begin(kOrientations), std::end(kOrientations), orientation);
    return found == std::end(kOrientations) ? 1 : static_cast<int32_t>(found - kOrientations) + 1;
}

Exif readExif(const uint8_t* bytes, size_t size) {
    const Block block(bytes, size);
    Exif exif;
    exif.orientation =
        orientationFromExif(static_cast<int32_t>(block.integer(kOrientationTag).value_or(1)));
    if (block.integer(kUnitTag) == kNoUnit) {
        setAspect(exif, block.rational(kXResolutionTag), block.rational(kYResolutionTag));
    } else {
        exif.xDpi = dotsPerInch(block, kXResolutionTag);
        exif.yDpi = dotsPerInch(block, kYResolutionTag);
    }
    for (const TiffTextField& field : kTiffTextFields) {
        std::string text = utf8FromUnknown(block.text(field.tag));
        if (!text.empty()) exif.texts.emplace_back(field.id, std::move(text));
    }
    return exif;
}

void setAspect(Exif& exif, double across, double down) {
    constexpr double kMost = 1e5;
    constexpr double kParts = 1000;
    if (!(across > 0 && down > 0 && across < kMost && down < kMost) || across == down) return;
    const bool whole = across == std::floor(across) && down == std::floor(down);
    const auto width = static_cast<int32_t>(std::lround(down * (whole ? 1 : kParts)));
    const auto height = static_cast<int32_t>(std::lround(across * (whole ? 1 : kParts)));
    const int32_t part = std::max(std::gcd(width, height), 1);
    exif.xAspect = width / part;
    exif.yAspect = height / part;
}

void describe(const Exif& exif, Description& description) {
    description.orientation = exif.orientation;
    if (exif.xDpi > 0 && exif.yDpi > 0) {
        description.tags.number(ITAG_XDPI, exif.xDpi);
        description.tags.number(ITAG_YDPI, exif.yDpi);
    } else if (exif.xAspect > 0 && exif.yAspect > 0) {
        description.tags.number(ITAG_XAspect, exif.xAspect);
        description.tags.number(ITAG_YAspect, exif.yAspect);
    }
    for (const auto& [id, text] : exif.texts) description.tags.text(id, text);
}

Resolution resolutionOf(const ImageToSave& image) {
    const int32_t x = std::max(image.number(ITAG_XDPI).value_or(0), 0);
    const int32_t y = std::max(image.number(ITAG_YDPI).value_or(0), 0);
    return {x > 0 ? x : y, y > 0 ? y : x};
}

Resolution densityOf(const ImageToSave& image) {
    const int32_t x = image.number(ITAG_XAspect).value_or(0);
    const int32_t y = image.number(ITAG_YAspect).value_or(0);
    return x > 0 && y > 0 ? Resolution{y, x} : Resolution{};
}

std::vector<uint8_t> exifBlock(const ImageToSave& image, const ExifParts& parts) {
    Writer writer;
    size_t size = 0;
    for (const TiffTextField& field : kTiffTextFields) {
        std::string text = image.text(field.id);
        cutUtf8(text, kLongestText);
        size += text.size();
        if (!text.empty() && size < kSegmentLimit) writer.addText(field.tag, text);
    }
    const int32_t orientation = exifFromOrientation(image.number(ITAG_Orientation).value_or(0));
    if (parts.orientation && orientation != 1) writer.addShort(kOrientationTag, orientation);
    const Resolution dpi = resolutionOf(image);
    if (dpi.x > 0 && (parts.resolutionAlone || !writer.isEmpty())) {
        writer.addRational(kXResolutionTag, dpi.x);
        writer.addRational(kYResolutionTag, dpi.y);
        writer.addShort(kUnitTag, 2);
    }
    if (writer.isEmpty()) return {};
    return writer.block();
}

}  // namespace formats
