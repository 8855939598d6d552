#include "formats/tga/tga_extension.h"

#include <vorn/tags.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "formats/common/little_endian.h"
#include "formats/common/utf8.h"

namespace tga {
namespace {

using formats::littleEndian;
using formats::putLittleEndian;

constexpr std::string_view kMark{"TRUEVISION-XFILE.\0", 18};
constexpr size_t kFooterSize = 26;
constexpr size_t kSize = 495;
constexpr size_t kComments = 43;  // the places of the fields
constexpr size_t kTime = 367;
constexpr size_t kAspect = 474;
constexpr size_t kAlpha = 494;
constexpr size_t kCommentLines = 4;
constexpr size_t kCommentSize = 81;
constexpr uint8_t kUsefulAlpha = 3;
constexpr uint8_t kMultipliedAlpha = 4;

struct TextField {
    uint32_t id;
    size_t place;
};
constexpr TextField kTextFields[] = {
    {ITAG_Artist, 2}, {ITAG_DocumentName, 379}, {ITAG_Software, 426}};
constexpr size_t kTextSize = 41;  // with a 0 at its end

// Month, day, year, hour, minute and second stand in the file in this order.
constexpr size_t kTimeParts = 6;
constexpr size_t kFileOrder[kTimeParts] = {2, 0, 1, 3, 4, 5};  // of those of EXIF

std::string textAt(const uint8_t* field, size_t size) {
    const auto* text = reinterpret_cast<const char*>(field);
    return formats::utf8FromUnknown({text, std::find(text, text + size, '\0')});
}

void addText(formats::Exif& notes, uint32_t id, std::string text) {
    if (!text.empty()) notes.texts.emplace_back(id, std::move(text));
}

void readTime(const uint8_t* field, formats::Exif& notes) {
    unsigned part[kTimeParts];
    for (size_t i = 0; i < kTimeParts; ++i) part[i] = littleEndian(field + 2 * kFileOrder[i], 2);
    if (part[0] == 0) return;
    char text[64];
    std::snprintf(text, sizeof text, "%04u:%02u:%02u %02u:%02u:%02u", part[0], part[1], part[2],
                  part[3], part[4], part[5]);
    addText(notes, ITAG_DateTime, text);
}

// False: this is no time as EXIF writes it.
bool putTime(const std::string& text, uint8_t* field) {
    unsigned part[kTimeParts];
    if (std::sscanf(text.c_str(), "%4u%*1[:-]%2u%*1[:-]%2u%*1[ T]%2u:%2u:%2u", &part[0], &part[1],
                    &part[2], &part[3], &part[4], &part[5]) != kTimeParts)
        return false;
    for (size_t i = 0; i < kTimeParts; ++i) {
        field[2 * kFileOrder[i]] = static_cast<uint8_t>(part[i]);
        field[2 * kFileOrder[i] + 1] = static_cast<uint8_t>(part[i] >> 8);
    }
    return true;
}

bool putAspect(const formats::ImageToSave& image, uint8_t* field) {
    const formats::Resolution density = formats::densityOf(image);
    if (density.x == density.y || density.x > 65535 || density.y > 65535) return false;
    std::vector<uint8_t> bytes;
    putLittleEndian(bytes, static_cast<uint32_t>(density.y), 2);
    putLittleEndian(bytes, static_cast<uint32_t>(density.x), 2);
    std::copy(bytes.begin(), bytes.end(), field);
    return true;
}

}  // namespace

Extension readExtension(formats::InputFile& file) {
    Extension extension;
    uint8_t bytes[kSize];
    const int64_t size = file.size();
    if (size < static_cast<int64_t>(kFooterSize)) return extension;
    file.seek(size - static_cast<int64_t>(kFooterSize));
    if (file.read(bytes, kFooterSize) != kFooterSize ||
        std::memcmp(bytes + 8, kMark.data(), kMark.size()) != 0)
        return extension;
    const int64_t place = littleEndian(bytes, 4);
    if (place == 0 || place > size) return extension;
    file.seek(place);
    if (file.read(bytes, kSize) != kSize || littleEndian(bytes, 2) < kSize) return extension;

    formats::Exif& notes = extension.notes;
    for (const TextField& field : kTextFields)
        addText(notes, field.id, textAt(bytes + field.place, kTextSize));
    std::string comments;
    for (size_t i = 0; i < kCommentLines; ++i) {
        const std::string line = textAt(bytes + kComments + i * kCommentSize, kCommentSize);
        if (!line.empty()) comments += (comments.empty() ? "" : "\n") + line;
    }
    addText(notes, ITAG_Description, std::move(comments));
    readTime(bytes + kTime, notes);
    setAspect(notes, littleEndian(bytes + kAspect + 2, 2), littleEndian(bytes + kAspect, 2));
    extension.multiplied = bytes[kAlpha] == kMultipliedAlpha;
    return extension;
}

std::vector<uint8_t> extensionOf(const formats::ImageToSave& image) {
    std::vector<uint8_t> bytes;
    putLittleEndian(bytes, kSize, 2);
    bytes.resize(kSize);
    bool said = false;
    for (const TextField& field : kTextFields) {
        std::string text = image.text(field.id);
        formats::cutUtf8(text, kTextSize - 1);
        std::copy(text.begin(), text.end(), &bytes[field.place]);
        said = said || !text.empty();
    }
    said = putTime(image.text(ITAG_DateTime), &bytes[kTime]) || said;
    said = putAspect(image, &bytes[kAspect]) || said;
    if (image.alpha) bytes[kAlpha] = kUsefulAlpha;
    if (!said) bytes.clear();
    return bytes;
}

std::vector<uint8_t> footer(uint32_t extensionPlace) {
    std::vector<uint8_t> bytes;
    putLittleEndian(bytes, extensionPlace, 4);
    putLittleEndian(bytes, 0, 4);  // no directory for developers
    bytes.insert(bytes.end(), kMark.begin(), kMark.end());
    return bytes;
}

}  // namespace tga
