#include "formats/heif/heif_loader.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "formats/common/big_endian.h"
#include "formats/common/divide_by_alpha.h"
#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"
#include "formats/heif/decoders.h"
#include "formats/heif/heif_boxes.h"

namespace heif {
namespace {

using formats::Failure;

constexpr size_t kHeadSize = 12;
constexpr std::string_view kExifName{"Exif\0\0", 6};  // some programs repeat JPEG's mark
constexpr int kMostBits = 16;

// What codecs add to the width and height that the boxes tell, at most; and what a tile may have of
// which only a corner is shown.
constexpr int64_t kMostPadding = 64;
constexpr int64_t kMostTilePixels = 2048 * 2048;

std::vector<uint8_t> contentOf(formats::InputFile& file) {
    std::vector<uint8_t> bytes(kHeadSize);
    if (file.read(bytes.data(), kHeadSize) != kHeadSize || std::memcmp(&bytes[4], "ftyp", 4) != 0)
        throw Failure{formats::kNotThisFormat};
    bytes.resize(std::max(formats::heldBytes(file.size(), 1), kHeadSize));
    file.readExactly(&bytes[kHeadSize], bytes.size() - kHeadSize);
    return bytes;
}

void check(const heif_error& error) {
    switch (error.code) {
        case heif_error_Unsupported_filetype:
            throw Failure{formats::kNotThisFormat};
        case heif_error_Unsupported_feature:
            throw Failure{formats::kUnsupported};
        default:
            heif::check(error, formats::kDamaged);
    }
}

}  // namespace

formats::Description HeifLoader::open(formats::InputFile file) {
    useOwnDecoders();
    file_ = contentOf(file);
    context_ = made(heif_context_alloc());
    heif_context_set_maximum_image_size_limit(context_.get(), VORN_MAX_SIZE);
    check(heif_context_read_from_memory_without_copy(context_.get(), file_.data(), file_.size(),
                                                     nullptr));
    formats::Description image;
    openPage(image);
    describeSamples(image);
    describeExif(image);
    return image;
}

// The picture that the file names as its main one comes first.
void HeifLoader::openPage(formats::Description& image) {
    heif_item_id main = 0;
    check(heif_context_get_primary_image_ID(context_.get(), &main));
    const int count = heif_context_get_number_of_top_level_images(context_.get());
    std::vector<heif_item_id> pages(static_cast<size_t>(std::max(count, 0)));
    heif_context_get_list_of_top_level_image_IDs(context_.get(), pages.data(), count);
    std::erase(pages, main);
    pages.insert(pages.begin(), main);
    const int32_t page = wishes().page;
    if (page < 1 || static_cast<size_t>(page) > pages.size()) throw Failure{formats::kNoSuchPage};
    if (pages.size() > 1) {
        image.tags.number(ITAG_PageNumber, page);
        image.tags.number(ITAG_PageCount, static_cast<int32_t>(pages.size()));
    }
    const heif_item_id item = pages[static_cast<size_t>(page - 1)];
    heif_image_handle* handle = nullptr;
    check(heif_context_get_image_handle(context_.get(), item, &handle));
    page_.reset(handle);
    grey_ = isGrey(file_, item);
}

void HeifLoader::describeSamples(formats::Description& image) {
    image.width = heif_image_handle_get_width(page_.get());
    image.height = heif_image_handle_get_height(page_.get());
    bits_ = heif_image_handle_get_luma_bits_per_pixel(page_.get());
    if (image.width < 1 || image.height < 1) throw Failure{formats::kDamaged};
    if (bits_ < 8 || bits_ > kMostBits) throw Failure{formats::kUnsupported};
    image.alpha = alpha_ = heif_image_handle_has_alpha_channel(page_.get()) != 0;
    image.colorSpace = grey_ ? VORN_CS_GRAY : VORN_CS_RGB;
    image.channels = (grey_ ? 1 : 3) + (alpha_ ? 1 : 0);
    image.bytesPerChannel = bits_ > 8 ? 2 : 1;
    image.significantBits = bits_;
    width_ = static_cast<size_t>(image.width);
    height_ = static_cast<size_t>(image.height);
    channels_ = static_cast<size_t>(image.channels);
    // libheif is asked for colours, also where there are none: of tiles it makes nothing else.
    formats::heldBytes(image.height, int64_t{image.width} * (alpha_ ? 4 : 3) * (bits_ > 8 ? 2 : 1));
    const uint32_t most = (1u << bits_) - 1;
    for (uint32_t value = 0; bits_ > 8 && value <= most; ++value)
        scale_.push_back(static_cast<uint16_t>((value * 65535 + most / 2) / most));
}

// libheif turns and mirrors as the file's own boxes say. The orientation in EXIF says the same once
// more, for other programs, and doesn't count.
void HeifLoader::describeExif(formats::Description& image) const {
    heif_item_id item = 0;
    if (heif_image_handle_get_list_of_metadata_block_IDs(page_.get(), "Exif", &item, 1) < 1) return;
    std::vector<uint8_t> bytes(heif_image_handle_get_metadata_size(page_.get(), item));
    if (bytes.size() < 4 ||
        heif_image_handle_get_metadata(page_.get(), item, bytes.data()).code != heif_error_Ok)
        return;
    // In front stands how far behind this number the block begins.
    const size_t begin = formats::bigEndian(bytes.data(), 4);
    std::string_view block(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    block.remove_prefix(std::min(begin + 4, block.size()));
    if (block.substr(0, kExifName.size()) == kExifName) block.remove_prefix(kExifName.size());
    formats::Exif exif =
        formats::readExif(reinterpret_cast<const uint8_t*>(block.data()), block.size());
    exif.orientation = 0;
    describe(exif, image);
}

void HeifLoader::decode() {
    limitCodedPixels(std::max((heif_image_handle_get_ispe_width(page_.get()) + kMostPadding) *
                                  (heif_image_handle_get_ispe_height(page_.get()) + kMostPadding),
                              kMostTilePixels));
    const auto options = made(heif_decoding_options_alloc());
    options->strict_decoding = 1;
    const heif_chroma narrow = alpha_ ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
    const heif_chroma wide =
        alpha_ ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    heif_image* image = nullptr;
    check(heif_decode_image(page_.get(), &image, heif_colorspace_RGB, bits_ > 8 ? wide : narrow,
                            options.get()));
    picture_.reset(image);
    // The pixels are those of the codec, which may contradict the boxes.
    const auto decodedWidth = heif_image_get_width(image, heif_channel_interleaved);
    const auto decodedHeight = heif_image_get_height(image, heif_channel_interleaved);
    next_ = heif_image_get_plane_readonly(image, heif_channel_interleaved, &step_);
    if (!next_ || decodedWidth != static_cast<int>(width_) ||
        decodedHeight != static_cast<int>(height_) ||
        heif_image_get_bits_per_pixel_range(image, heif_channel_interleaved) != bits_)
        throw Failure{formats::kDamaged};
}

void HeifLoader::readLine(uint8_t* line) {
    if (!picture_) decode();
    const size_t stored = alpha_ ? 4 : 3;
    const size_t bytes = scale_.empty() ? 1 : 2;
    for (size_t x = 0; x < width_; ++x) {
        for (size_t c = 0; c < channels_; ++c) {
            const size_t from = x * stored + (grey_ && c == 1 ? 3 : c);
            uint16_t sample = next_[from];
            if (bytes == 2) {
                std::memcpy(&sample, next_ + from * 2, 2);
                sample = scale_[std::min<size_t>(sample, scale_.size() - 1)];
            }
            std::memcpy(line + (x * channels_ + c) * bytes, &sample, bytes);
        }
    }
    next_ += step_;
    if (alpha_ && heif_image_handle_is_premultiplied_alpha(page_.get()))
        formats::divideByAlpha(line, width_, channels_, bytes);
}

}  // namespace heif
