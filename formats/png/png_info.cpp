#include "formats/png/png_info.h"

#include <vorn/tags.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "formats/common/exif.h"
#include "formats/png/png_text.h"

namespace png {
namespace {

constexpr double kMetresPerInch = 0.0254;
constexpr double kLargestResolution = 2147483647.0;

// libpng calls this number a resolution per metre; 0 when it is none.
int32_t dotsPerInch(png_uint_32 dotsPerMetre) {
    return static_cast<int32_t>(std::lround(dotsPerMetre * kMetresPerInch));
}

png_uint_32 dotsPerMetre(int32_t dotsPerInch) {
    return static_cast<png_uint_32>(
        std::lround(std::min(dotsPerInch / kMetresPerInch, kLargestResolution)));
}

formats::Exif exifOf(const Session& session) {
    png_uint_32 size = 0;
    png_bytep block = nullptr;
    if (!png_get_eXIf_1(session.png(), session.info(), &size, &block)) return {};
    return formats::readExif(block, size);
}

void describeResolution(const Session& session, formats::Exif& notes) {
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (!png_get_pHYs(session.png(), session.info(), &x, &y, &unit) || x == 0 || y == 0) return;
    if (unit == PNG_RESOLUTION_METER) {
        if (dotsPerInch(x) == 0 || dotsPerInch(y) == 0) return;
        notes.xDpi = dotsPerInch(x);
        notes.yDpi = dotsPerInch(y);
    } else {
        setAspect(notes, x, y);
    }
}

void collectTexts(const Session& session, std::vector<png_text>& all) {
    png_textp texts = nullptr;
    int count = 0;
    png_get_text(session.png(), session.info(), &texts, &count);
    all.insert(all.end(), texts, texts + count);
}

const png_text* findText(const std::vector<png_text>& texts, const char* keyword) {
    for (const png_text& text : texts) {
        if (keyword && std::strcmp(text.key, keyword) == 0 && text.text) return &text;
    }
    return nullptr;
}

std::string utf8Of(const png_text& text) {
    const bool international = text.compression >= PNG_ITXT_COMPRESSION_NONE;
    return international ? std::string(text.text) : utf8FromLatin1(text.text);
}

void describeTexts(const std::vector<png_text>& texts, formats::Exif& notes) {
    for (const TextField& field : kTextFields) {
        const png_text* text = findText(texts, field.keyword);
        if (!text) text = findText(texts, field.alsoKnownAs);
        if (!text) continue;
        std::string value = utf8Of(*text);
        cutUtf8(value, formats::kLongestText);
        if (value.empty()) continue;
        std::erase_if(notes.texts, [&](const auto& known) { return known.first == field.id; });
        notes.texts.emplace_back(field.id, std::move(value));
    }
}

void putText(Session& session, const char* keyword, std::string value) {
    png_text text{};
    std::string latin1;
    const bool plain = latin1FromUtf8(value, latin1);
    std::string& bytes = plain ? latin1 : value;
    std::string key = keyword;
    std::string none;
    text.compression = plain ? PNG_TEXT_COMPRESSION_NONE : PNG_ITXT_COMPRESSION_NONE;
    text.key = key.data();
    text.text = bytes.data();
    text.lang = none.data();
    text.lang_key = none.data();
    session.run([&] { png_set_text(session.png(), session.info(), &text, 1); });
}

}  // namespace

// What PNG itself has a place for counts more than EXIF.
void describe(const Session& session, const Session* behind, formats::Description& image) {
    formats::Exif notes = exifOf(session);
    std::vector<png_text> texts;
    collectTexts(session, texts);
    if (behind) {
        if (png_get_valid(behind->png(), behind->info(), PNG_INFO_eXIf)) notes = exifOf(*behind);
        collectTexts(*behind, texts);
    }
    describeResolution(session, notes);
    describeTexts(texts, notes);
    formats::describe(notes, image);
}

void putResolution(Session& session, const formats::ImageToSave& image) {
    const formats::Resolution dpi = formats::resolutionOf(image);
    const formats::Resolution density = formats::densityOf(image);
    if (dpi.x == 0 && density.x == 0) return;
    session.run([&] {
        png_set_pHYs(session.png(), session.info(),
                     dpi.x > 0 ? dotsPerMetre(dpi.x) : static_cast<png_uint_32>(density.x),
                     dpi.x > 0 ? dotsPerMetre(dpi.y) : static_cast<png_uint_32>(density.y),
                     dpi.x > 0 ? PNG_RESOLUTION_METER : PNG_RESOLUTION_UNKNOWN);
    });
}

void putTexts(Session& session, const formats::ImageToSave& image) {
    for (const TextField& field : kTextFields) {
        std::string value = image.text(field.id);
        if (!value.empty()) putText(session, field.keyword, std::move(value));
    }
}

}  // namespace png
