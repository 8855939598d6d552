#include "formats/jpeg2000/boxes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <string_view>

#include "formats/common/big_endian.h"

namespace jpeg2000 {
namespace {

using formats::bigEndian;
using formats::putBigEndian;

constexpr std::string_view kExifBox = "JpgTiffExif->JP2";  // the sixteen bytes of its UUID
constexpr int64_t kLargestExif = 1 << 24;
constexpr int kMostBoxes = 10000;
constexpr double kInch = 0.0254;  // metres
constexpr uint32_t kGrey = 17;
constexpr uint32_t kSrgb = 16;
constexpr uint32_t kWavelets = 7;  // the only kind of compression
constexpr int32_t kMostDpi = 65535;

struct Box {
    char type[4];
    int64_t start;  // of its content
    int64_t end;

    bool is(std::string_view name) const { return std::string_view(type, 4) == name; }
};

// Nothing at `end`, or when the box doesn't fit before it: the codestream says what is damaged.
std::optional<Box> boxAt(formats::InputFile& file, int64_t place, int64_t end) {
    uint8_t head[16];
    file.seek(place);
    const size_t got = file.read(head, sizeof head);
    if (got < 8) return std::nullopt;
    int64_t length = bigEndian(head, 4);
    int64_t headSize = 8;
    if (length == 1 && got == sizeof head) {
        length =
            static_cast<int64_t>(uint64_t{bigEndian(head + 8, 4)} << 32 | bigEndian(head + 12, 4));
        headSize = 16;
    } else if (length == 0) {
        length = end - place;
    }
    if (length < headSize || length > end - place) return std::nullopt;
    Box box{{}, place + headSize, place + length};
    std::memcpy(box.type, head + 4, sizeof box.type);
    return box;
}

template <class Visit>
void eachBox(formats::InputFile& file, int64_t place, int64_t end, Visit visit) {
    for (int count = 0; count < kMostBoxes && place < end; ++count) {
        const std::optional<Box> box = boxAt(file, place, end);
        if (!box) return;
        visit(*box);
        place = box->end;
    }
}

std::vector<uint8_t> contentOf(formats::InputFile& file, const Box& box) {
    std::vector<uint8_t> bytes(static_cast<size_t>(box.end - box.start));
    file.seek(box.start);
    file.readExactly(bytes.data(), bytes.size());
    return bytes;
}

// A fraction and a power of ten: pixels in a metre.
int32_t dotsPerInch(const uint8_t* fraction, uint8_t exponent) {
    const uint32_t divisor = bigEndian(fraction + 2, 2);
    if (divisor == 0) return 0;
    const double value =
        bigEndian(fraction, 2) * kInch / divisor * std::pow(10.0, static_cast<int8_t>(exponent));
    return value >= 1 && value < 1e6 ? static_cast<int32_t>(std::lround(value)) : 0;
}

// The resolution at which the picture was taken counts more than that at which to show it.
void readResolution(formats::InputFile& file, const Box& all, formats::Exif& notes) {
    eachBox(file, all.start, all.end, [&](const Box& box) {
        const bool taken = box.is("resc");
        if ((!taken && (!box.is("resd") || notes.xDpi > 0)) || box.end - box.start != 10) return;
        const std::vector<uint8_t> bytes = contentOf(file, box);
        notes.yDpi = dotsPerInch(&bytes[0], bytes[8]);
        notes.xDpi = dotsPerInch(&bytes[4], bytes[9]);
    });
}

void readExifBox(formats::InputFile& file, const Box& box, formats::Exif& notes) {
    const auto idSize = static_cast<int64_t>(kExifBox.size());
    if (box.end - box.start < idSize || box.end - box.start > kLargestExif) return;
    const std::vector<uint8_t> bytes = contentOf(file, box);
    if (std::memcmp(bytes.data(), kExifBox.data(), kExifBox.size()) != 0) return;
    formats::Exif exif =
        formats::readExif(bytes.data() + kExifBox.size(), bytes.size() - kExifBox.size());
    if (notes.xDpi > 0 && notes.yDpi > 0) {
        exif.xDpi = notes.xDpi;
        exif.yDpi = notes.yDpi;
    }
    notes = std::move(exif);
}

// Opens a box and, at its end, notes its length in its head.
class BoxWriter {
  public:
    BoxWriter(std::vector<uint8_t>& bytes, std::string_view type)
        : bytes_(bytes), place_(bytes.size()) {
        putBigEndian(bytes_, 0, 4);
        bytes_.insert(bytes_.end(), type.begin(), type.end());
    }
    ~BoxWriter() {
        const auto length = static_cast<uint32_t>(bytes_.size() - place_);
        for (size_t i = 0; i < 4; ++i)
            bytes_[place_ + i] = static_cast<uint8_t>(length >> (24 - 8 * i));
    }
    BoxWriter(const BoxWriter&) = delete;
    BoxWriter& operator=(const BoxWriter&) = delete;

  private:
    std::vector<uint8_t>& bytes_;
    size_t place_;
};

void put(std::vector<uint8_t>& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void putImageHeader(std::vector<uint8_t>& bytes, const formats::ImageToSave& image) {
    const BoxWriter box(bytes, "ihdr");
    putBigEndian(bytes, static_cast<uint32_t>(image.height), 4);
    putBigEndian(bytes, static_cast<uint32_t>(image.width), 4);
    putBigEndian(bytes, static_cast<uint32_t>(image.channels), 2);
    putBigEndian(bytes, static_cast<uint32_t>(8 * image.bytesPerChannel - 1), 1);
    putBigEndian(bytes, kWavelets, 1);
    putBigEndian(bytes, 0, 2);  // the colours are known, and nobody's rights are noted
}

void putColors(std::vector<uint8_t>& bytes, const formats::ImageToSave& image) {
    const BoxWriter box(bytes, "colr");
    putBigEndian(bytes, 1 << 16, 3);  // by number
    putBigEndian(bytes, image.colorSpace == VORN_CS_GRAY ? kGrey : kSrgb, 4);
}

// For each channel its number, whether it is alpha, and which colour it belongs to: 0 is all.
void putChannels(std::vector<uint8_t>& bytes, const formats::ImageToSave& image) {
    const BoxWriter box(bytes, "cdef");
    const auto channels = static_cast<uint32_t>(image.channels);
    putBigEndian(bytes, channels, 2);
    for (uint32_t c = 0; c < channels; ++c) {
        const bool alpha = c + 1 == channels;
        putBigEndian(bytes, c, 2);
        putBigEndian(bytes, alpha ? 1 : 0, 2);
        putBigEndian(bytes, alpha ? 0 : c + 1, 2);
    }
}

// Dots per inch as dots per metre: x / 254 * 10^4.
void putResolution(std::vector<uint8_t>& bytes, const formats::Resolution& dpi) {
    const BoxWriter outer(bytes, "res ");
    const BoxWriter box(bytes, "resc");
    for (const int32_t number : {dpi.y, dpi.x}) {
        putBigEndian(bytes, static_cast<uint32_t>(std::min(number, kMostDpi)), 2);
        putBigEndian(bytes, 254, 2);
    }
    putBigEndian(bytes, 0x0404, 2);
}

}  // namespace

Boxes readBoxes(formats::InputFile& file) {
    Boxes boxes;
    eachBox(file, 0, file.size(), [&](const Box& box) {
        if (box.is("jp2c") && boxes.codestream < 0) boxes.codestream = box.start;
        if (box.is("uuid")) readExifBox(file, box, boxes.notes);
        if (!box.is("jp2h")) return;
        eachBox(file, box.start, box.end, [&](const Box& part) {
            if (part.is("res ")) readResolution(file, part, boxes.notes);
        });
    });
    return boxes;
}

std::vector<uint8_t> boxesFor(const formats::ImageToSave& image) {
    std::vector<uint8_t> bytes;
    {
        const BoxWriter signature(bytes, "jP  ");
        put(bytes, "\r\n\x87\n");
    }
    {
        const BoxWriter type(bytes, "ftyp");
        put(bytes, {"jp2 \0\0\0\0jp2 ", 12});
    }
    {
        const BoxWriter header(bytes, "jp2h");
        putImageHeader(bytes, image);
        putColors(bytes, image);
        if (image.alpha) putChannels(bytes, image);
        const formats::Resolution dpi = formats::resolutionOf(image);
        if (dpi.x > 0) putResolution(bytes, dpi);
    }
    const std::vector<uint8_t> exif =
        formats::exifBlock(image, {.orientation = false, .resolutionAlone = false});
    if (!exif.empty()) {
        const BoxWriter box(bytes, "uuid");
        put(bytes, kExifBox);
        bytes.insert(bytes.end(), exif.begin(), exif.end());
    }
    put(bytes, {"\0\0\0\0jp2c", 8});
    return bytes;
}

}  // namespace jpeg2000
