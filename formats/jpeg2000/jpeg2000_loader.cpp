#include "formats/jpeg2000/jpeg2000_loader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

#include "formats/common/divide_by_alpha.h"
#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"
#include "formats/jpeg2000/boxes.h"

namespace jpeg2000 {
namespace {

using formats::Failure;

// Rows of tiles are decoded together up to this size: each band means a walk through the file.
constexpr int64_t kBandBytes = 32 << 20;

// What the library holds for each tile, before there are pixels, and for each component of it.
constexpr int64_t kBytesOfTile = 8192;
constexpr int64_t kBytesOfComponent = 2048;

constexpr int32_t kSmallest = 16;

OPJ_CODEC_FORMAT formatOf(formats::InputFile& file) {
    char bytes[12] = {};
    const std::string_view head(bytes, file.read(bytes, sizeof bytes));
    using namespace std::string_view_literals;
    if (head == "\0\0\0\x0CjP  \r\n\x87\n"sv) return OPJ_CODEC_JP2;
    if (head.substr(0, 4) == "\xFF\x4F\xFF\x51"sv) return OPJ_CODEC_J2K;
    throw Failure{formats::kNotThisFormat};
}

uint32_t halved(uint32_t size, uint32_t times) {
    return static_cast<uint32_t>((uint64_t{size} + (uint64_t{1} << times) - 1) >> times);
}

// The colour space that an ICC profile is for.
std::string_view profileColors(const opj_image_t& image) {
    constexpr size_t kPlace = 16;
    constexpr size_t kSize = 4;
    if (!image.icc_profile_buf || image.icc_profile_len < kPlace + kSize) return "";
    return {reinterpret_cast<const char*>(image.icc_profile_buf) + kPlace, kSize};
}

// L*a*b*: the library hands on its parameters as a profile without a length.
bool isLab(const opj_image_t& image) {
    return profileColors(image) == "Lab " || (image.icc_profile_buf && image.icc_profile_len == 0);
}

bool isAlpha(const opj_image_comp_t& component) {
    return component.alpha == 1 || component.alpha == 2;
}

// Components that lie further apart than the first can only be differences of colour.
bool hasWideColors(const opj_image_t& image) {
    return image.numcomps >= 3 && image.comps[1].dx > image.comps[0].dx &&
           image.comps[2].dx > image.comps[0].dx;
}

int32_t rounded(double value, int32_t full) {
    return std::clamp(static_cast<int32_t>(std::lround(value)), 0, full);
}

}  // namespace

formats::Description Jpeg2000Loader::open(formats::InputFile file) {
    file_ = std::move(file);
    format_ = formatOf(file_);
    Boxes boxes{0, {}};
    if (format_ == OPJ_CODEC_JP2) boxes = readBoxes(file_);
    if (boxes.codestream < 0) throw Failure{formats::kDamaged};
    size_ = readSize(file_, boxes.codestream);
    formats::heldBytes(int64_t{size_.tilesAcross} * size_.tilesDown,
                       kBytesOfTile + kBytesOfComponent * size_.components);
    checkTiles(file_, boxes.codestream, size_);
    formats::Description image;
    describe(boxes.notes, image);
    if (wishes().width > 0 || wishes().height > 0)
        reduction_ = chooseReduction(Decoder(file_, format_, 0), image.orientation);
    look(image);
    return image;
}

// The smallest picture that is not smaller than wanted. The wish counts in the picture as it is
// seen.
uint32_t Jpeg2000Loader::chooseReduction(const Decoder& head, int32_t orientation) const {
    int32_t width = wishes().width;
    int32_t height = wishes().height;
    if (orientation % 2 != 0) std::swap(width, height);
    const opj_image_comp_t& first = head.image().comps[0];
    uint32_t reduction = 0;
    while (reduction < head.mostReduction() &&
           static_cast<int64_t>(first.w >> (reduction + 1)) >= std::max(width, kSmallest) &&
           static_cast<int64_t>(first.h >> (reduction + 1)) >= std::max(height, kSmallest))
        ++reduction;
    return reduction;
}

void Jpeg2000Loader::look(formats::Description& image) {
    const Decoder head(file_, format_, reduction_);
    const opj_image_comp_t& first = head.image().comps[0];
    if (first.w > VORN_MAX_SIZE || first.h > VORN_MAX_SIZE) throw Failure{formats::kUnsupported};
    image.width = static_cast<int32_t>(first.w);
    image.height = static_cast<int32_t>(first.h);
    width_ = first.w;
    chooseBands();
    std::unique_ptr<Decoder> corner;
    try {
        corner = cornerOf(head, head.mostReduction());
    } catch (const Failure&) {
        // The first tile may have fewer resolutions than the head of the file says.
        corner = cornerOf(head, reduction_);
    }
    chooseColors(corner->image(), image);
    channels_ = static_cast<size_t>(image.channels);
    bytes_ = static_cast<size_t>(image.bytesPerChannel);
    full_ = bytes_ == 2 ? 65535 : 255;
    rows_.assign(sources_.size(), std::vector<int32_t>(width_));
}

// A corner of the picture shows what comes out: how many components of which kind. One sample of
// each is enough, since all the blocks around it have to be decoded, of every resolution.
std::unique_ptr<Decoder> Jpeg2000Loader::cornerOf(const Decoder& head, uint32_t reduction) {
    uint64_t apart = 1;
    for (uint32_t c = 0; c < head.image().numcomps; ++c)
        apart = std::max<uint64_t>({apart, head.image().comps[c].dx, head.image().comps[c].dy});
    const auto end = [&](uint32_t from, uint32_t to) {
        return static_cast<uint32_t>(std::min<uint64_t>(to, from + (apart << reduction)));
    };
    const Area corner{size_.x0, size_.y0, end(size_.x0, size_.x1), end(size_.y0, size_.y1)};
    auto decoder = std::make_unique<Decoder>(file_, format_, reduction);
    decoder->decode(&corner);
    return decoder;
}

void Jpeg2000Loader::chooseColors(const opj_image_t& seen, formats::Description& image) {
    for (uint32_t c = 0; c < seen.numcomps; ++c) {
        if (!isAlpha(seen.comps[c])) sources_.push_back(c);
    }
    if (seen.color_space == OPJ_CLRSPC_EYCC || isLab(seen)) throw Failure{formats::kUnsupported};
    const bool inks = seen.color_space == OPJ_CLRSPC_CMYK || profileColors(seen) == "CMYK";
    const size_t colors = inks ? 4 : sources_.size() < 3 ? 1 : 3;
    if (sources_.size() < colors) throw Failure{formats::kDamaged};
    sources_.resize(colors);
    image.colorSpace = colors == 1 ? VORN_CS_GRAY : VORN_CS_RGB;
    image.channels = colors == 1 ? 1 : 3;
    if (inks)
        useInks(image);
    else if (colors == 3 && (seen.color_space == OPJ_CLRSPC_SYCC || hasWideColors(seen)))
        colors_ = Colors::kFromYcc;
    for (const uint32_t source : sources_)
        image.significantBits =
            std::max(image.significantBits, static_cast<int32_t>(seen.comps[source].prec));
    image.significantBits = std::min(image.significantBits, 16);
    image.bytesPerChannel = image.significantBits > 8 ? 2 : 1;
    chooseAlpha(seen, image);
}

void Jpeg2000Loader::useInks(formats::Description& image) {
    if (wishes().colorSpace == VORN_CS_RGB || wishes().colorSpace == VORN_CS_GRAY) {
        colors_ = Colors::kFromInks;
        return;
    }
    image.colorSpace = VORN_CS_CMYK;
    image.channels = 4;
}

// Files that say nothing of their channels mean alpha with the one that is left.
void Jpeg2000Loader::chooseAlpha(const opj_image_t& seen, formats::Description& image) {
    uint32_t alpha = 0;
    while (alpha < seen.numcomps && !isAlpha(seen.comps[alpha])) ++alpha;
    if (alpha == seen.numcomps && seen.numcomps == sources_.size() + 1) --alpha;
    if (alpha == seen.numcomps) return;
    multiplied_ = seen.comps[alpha].alpha == 2 && image.colorSpace != VORN_CS_CMYK;
    sources_.push_back(alpha);
    image.alpha = true;
    image.channels += 1;
}

void Jpeg2000Loader::chooseBands() {
    const auto across = static_cast<int64_t>(width_);
    const int64_t lineBytes = across * 4 * std::max<int64_t>(size_.components, 4);
    const uint32_t height = halved(size_.y1 - size_.y0, reduction_);
    bandStart_ = size_.y0;
    if (size_.tilesDown > 1 && reduction_ == 0) {
        const int64_t rows = std::max<int64_t>(kBandBytes / (lineBytes * size_.tileHeight), 1);
        if (rows < size_.tilesDown) bandHeight_ = static_cast<uint32_t>(rows * size_.tileHeight);
    }
    formats::heldBytes(bandHeight_ > 0 ? bandHeight_ : height, lineBytes);
}

void Jpeg2000Loader::nextBand() {
    band_.reset();
    band_ = std::make_unique<Decoder>(file_, format_, reduction_);
    row_ = 0;
    if (bandHeight_ == 0) {
        band_->decode(nullptr);
        return;
    }
    const uint32_t intoTile = (bandStart_ - size_.tileY) % size_.tileHeight;
    const uint64_t end =
        std::min<uint64_t>(uint64_t{bandStart_} - intoTile + bandHeight_, size_.y1);
    const Area area{size_.x0, bandStart_, size_.x1, static_cast<uint32_t>(end)};
    band_->decode(&area);
    bandStart_ = area.y1;
}

// The samples of a line of the band, from 0 to full_. Components that lie further apart than the
// first are repeated.
void Jpeg2000Loader::fillRow(const opj_image_comp_t& component, std::vector<int32_t>& row) const {
    const opj_image_comp_t& first = band_->image().comps[0];
    const auto index = [&](uint32_t start, uint32_t i, uint32_t step, const uint32_t ownStart,
                           uint32_t ownStep, uint32_t size) {
        const uint64_t place =
            (uint64_t{halved(start, reduction_)} + i) * step / std::max(ownStep, 1u);
        const uint64_t own = halved(ownStart, reduction_);
        return place <= own ? size_t{0} : std::min<size_t>(place - own, size - 1);
    };
    const size_t y = index(first.y0, row_, first.dy, component.y0, component.dy, component.h);
    const int32_t* samples = component.data + y * component.w;
    const uint32_t bits = std::clamp(component.prec, 1u, 31u);
    const int64_t most = (int64_t{1} << bits) - 1;
    const int64_t middle = component.sgnd ? int64_t{1} << (bits - 1) : 0;
    for (uint32_t x = 0; x < width_; ++x) {
        const size_t at =
            component.dx == first.dx && component.w == width_
                ? x
                : index(first.x0, x, first.dx, component.x0, component.dx, component.w);
        const int64_t sample = std::clamp<int64_t>(samples[at] + middle, 0, most);
        row[x] = static_cast<int32_t>(most == full_ ? sample : (sample * full_ + most / 2) / most);
    }
}

// sYCC: the brightness and two differences, each of the full range. Inks: as they look on paper.
void Jpeg2000Loader::convertRows() {
    const int32_t middle = (full_ + 1) / 2;
    for (size_t x = 0; x < width_; ++x) {
        int32_t& r = rows_[0][x];
        int32_t& g = rows_[1][x];
        int32_t& b = rows_[2][x];
        if (colors_ == Colors::kFromInks) {
            const int64_t light = full_ - rows_[3][x];
            for (int32_t* ink : {&r, &g, &b})
                *ink = static_cast<int32_t>(((full_ - *ink) * light + full_ / 2) / full_);
        } else {
            const double y = r;
            const int32_t blue = g - middle;
            const int32_t red = b - middle;
            r = rounded(y + 1.402 * red, full_);
            g = rounded(y - 0.344136 * blue - 0.714136 * red, full_);
            b = rounded(y + 1.772 * blue, full_);
        }
    }
    if (colors_ == Colors::kFromInks) std::swap(rows_[3], rows_.back());
}

void Jpeg2000Loader::readLine(uint8_t* line) {
    if (!band_ || row_ == band_->image().comps[0].h) nextBand();
    const opj_image_t& image = band_->image();
    for (size_t i = 0; i < sources_.size(); ++i) {
        if (sources_[i] >= image.numcomps) throw Failure{formats::kDamaged};
        fillRow(image.comps[sources_[i]], rows_[i]);
    }
    ++row_;
    if (colors_ != Colors::kAsTheyAre) convertRows();
    for (size_t c = 0; c < channels_; ++c) {
        uint8_t* to = line + c * bytes_;
        for (size_t x = 0; x < width_; ++x, to += channels_ * bytes_)
            std::memcpy(to, &rows_[c][x], bytes_);
    }
    if (multiplied_) formats::divideByAlpha(line, width_, channels_, bytes_);
}

}  // namespace jpeg2000
