#include "formats/jxl/jxl_loader.h"

#include <jxl/encode.h>

#include <algorithm>
#include <cstring>

#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"

namespace jxl_format {
namespace {

using formats::Failure;

constexpr size_t kHeadSize = 12;  // of the container's signature
constexpr size_t kLargestExif = 1 << 24;
constexpr size_t kOffsetSize = 4;  // of the block in its box: a number before it says how much

void check(JxlDecoderStatus status) {
    if (status != JXL_DEC_SUCCESS) throw Failure{formats::kDamaged};
}

std::vector<uint8_t> contentOf(formats::InputFile& file) {
    std::vector<uint8_t> bytes(kHeadSize);
    const size_t got = file.read(bytes.data(), kHeadSize);
    const JxlSignature signature = JxlSignatureCheck(bytes.data(), got);
    if (signature != JXL_SIG_CODESTREAM && signature != JXL_SIG_CONTAINER)
        throw Failure{formats::kNotThisFormat};
    bytes.resize(std::max(formats::heldBytes(file.size(), 1), got));
    if (bytes.size() > kHeadSize) file.readExactly(&bytes[kHeadSize], bytes.size() - kHeadSize);
    return bytes;
}

// Collects what stands in the file's first Exif box, compressed or not.
class ExifBox {
  public:
    explicit ExifBox(JxlDecoder* decoder) : decoder_(decoder) {}

    // Another box begins.
    void next() {
        end();
        JxlBoxType type;
        check(JxlDecoderGetBoxType(decoder_, type, JXL_TRUE));
        reading_ = bytes_.empty() && std::memcmp(type, "Exif", sizeof type) == 0;
        if (reading_) grow();
    }

    // The room for the box is full.
    void grow() {
        const size_t left = JxlDecoderReleaseBoxBuffer(decoder_);
        const size_t filled = bytes_.size() - left;
        if (filled >= kLargestExif) throw Failure{formats::kDamaged};
        bytes_.resize(std::max<size_t>(4096, 2 * filled));
        check(JxlDecoderSetBoxBuffer(decoder_, &bytes_[filled], bytes_.size() - filled));
    }

    void end() {
        if (reading_) bytes_.resize(bytes_.size() - JxlDecoderReleaseBoxBuffer(decoder_));
        reading_ = false;
    }

    // The EXIF block.
    std::vector<uint8_t> content() {
        end();
        size_t start = kOffsetSize;
        for (size_t i = 0, offset = 0; bytes_.size() >= kOffsetSize && i < kOffsetSize; ++i) {
            offset = offset << 8 | bytes_[i];
            start = kOffsetSize + offset;
        }
        bytes_.erase(bytes_.begin(),
                     bytes_.begin() + static_cast<ptrdiff_t>(std::min(start, bytes_.size())));
        return std::move(bytes_);
    }

  private:
    JxlDecoder* decoder_;
    bool reading_ = false;
    std::vector<uint8_t> bytes_;
};

}  // namespace

formats::Description JxlLoader::open(formats::InputFile file) {
    file_ = contentOf(file);
    decoder_.reset(JxlDecoderCreate(nullptr));
    if (!decoder_) throw Failure{formats::kOutOfMemory};
    check(JxlDecoderSetParallelRunner(decoder_.get(), &JxlResizableParallelRunner, threads_.get()));
    check(JxlDecoderSetKeepOrientation(decoder_.get(), JXL_TRUE));
    check(JxlDecoderSetUnpremultiplyAlpha(decoder_.get(), JXL_TRUE));
    check(JxlDecoderSetDecompressBoxes(decoder_.get(), JXL_TRUE));
    formats::Description image;
    int32_t frames = 0;
    const std::vector<uint8_t> block = readHead(image, frames);
    if (wishes().page < 1 || wishes().page > frames) throw Failure{formats::kNoSuchPage};
    formats::Exif exif = formats::readExif(block.data(), block.size());
    // What the picture itself says counts more than a camera's notes.
    exif.orientation = formats::orientationFromExif(info_.orientation);
    describe(exif, image);
    if (info_.have_animation) {
        image.tags.number(ITAG_PageNumber, wishes().page);
        image.tags.number(ITAG_PageCount, frames);
    }
    return image;
}

void JxlLoader::start(int events) {
    check(JxlDecoderSubscribeEvents(decoder_.get(), events));
    check(JxlDecoderSetInput(decoder_.get(), file_.data(), file_.size()));
    JxlDecoderCloseInput(decoder_.get());
}

// The file is held as a whole, so a decoder that wants more of it has met its end.
JxlDecoderStatus JxlLoader::step() const {
    const JxlDecoderStatus status = JxlDecoderProcessInput(decoder_.get());
    if (status == JXL_DEC_ERROR || status == JXL_DEC_NEED_MORE_INPUT)
        throw Failure{formats::kDamaged};
    return status;
}

// Reads all but the pixels: counts the frames and returns the EXIF block.
std::vector<uint8_t> JxlLoader::readHead(formats::Description& image, int32_t& frames) {
    start(JXL_DEC_BASIC_INFO | JXL_DEC_FRAME | JXL_DEC_BOX);
    ExifBox exif(decoder_.get());
    for (JxlDecoderStatus status = step(); status != JXL_DEC_SUCCESS; status = step()) {
        if (status == JXL_DEC_BASIC_INFO) chooseFormat(image);
        if (status == JXL_DEC_FRAME) ++frames;
        if (status == JXL_DEC_BOX) exif.next();
        if (status == JXL_DEC_BOX_NEED_MORE_OUTPUT) exif.grow();
    }
    return exif.content();
}

void JxlLoader::chooseFormat(formats::Description& image) {
    check(JxlDecoderGetBasicInfo(decoder_.get(), &info_));
    for (size_t i = 0; i < info_.num_extra_channels; ++i) {
        JxlExtraChannelInfo extra;
        check(JxlDecoderGetExtraChannelInfo(decoder_.get(), i, &extra));
        if (extra.type == JXL_CHANNEL_BLACK) throw Failure{formats::kUnsupported};
    }
    // Floating-point samples are made fit for the eye only where the library knows their colours.
    if (info_.exponent_bits_per_sample > 0 && info_.uses_original_profile)
        throw Failure{formats::kUnsupported};
    if (info_.xsize > VORN_MAX_SIZE || info_.ysize > VORN_MAX_SIZE)
        throw Failure{formats::kUnsupported};
    const bool wide = std::max(info_.bits_per_sample, info_.alpha_bits) > 8;
    image.width = static_cast<int32_t>(info_.xsize);
    image.height = static_cast<int32_t>(info_.ysize);
    image.alpha = info_.alpha_bits > 0;
    image.channels = static_cast<int32_t>(info_.num_color_channels) + (image.alpha ? 1 : 0);
    image.colorSpace = info_.num_color_channels == 1 ? VORN_CS_GRAY : VORN_CS_RGB;
    image.bytesPerChannel = wide ? 2 : 1;
    image.significantBits = static_cast<int32_t>(std::min(info_.bits_per_sample, 16u));
    lineBytes_ = static_cast<size_t>(image.lineBytes());
    formats::heldBytes(image.height, image.lineBytes());
    if (!image.alpha || info_.alpha_bits == info_.bits_per_sample)
        prepareSamples(info_.bits_per_sample);
    format_ = {static_cast<uint32_t>(image.channels), wide ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8,
               JXL_LITTLE_ENDIAN, 0};
}

// The library scales samples with numbers that are a little short for this: in a few of a thousand,
// the last bit is wrong. The samples of the file are whole numbers, so what was meant is known.
void JxlLoader::prepareSamples(uint32_t bits) {
    if (bits <= 8 || bits >= 16 || !info_.uses_original_profile) return;
    const uint32_t most = (1u << bits) - 1;
    for (uint32_t value = 0; value <= 65535; ++value) {
        const uint32_t sample = (value * most + 32767) / 65535;
        exact_.push_back(static_cast<uint16_t>((sample * 65535 + most / 2) / most));
    }
}

void JxlLoader::readLine(uint8_t* line) {
    if (picture_.empty()) decode();
    std::copy_n(&picture_[sent_], lineBytes_, line);
    sent_ += lineBytes_;
    if (exact_.empty()) return;
    for (size_t at = 0; at < lineBytes_; at += sizeof(uint16_t)) {
        uint16_t value;
        std::memcpy(&value, line + at, sizeof value);
        std::memcpy(line + at, &exact_[value], sizeof value);
    }
}

void JxlLoader::decode() {
    JxlDecoder* decoder = decoder_.get();
    threads_.setFor(info_.xsize, info_.ysize);
    JxlDecoderRewind(decoder);
    start(JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE);
    JxlDecoderSkipFrames(decoder, static_cast<size_t>(wishes().page - 1));
    picture_.resize(lineBytes_ * info_.ysize);
    for (JxlDecoderStatus status = step(); status != JXL_DEC_FULL_IMAGE; status = step()) {
        if (status == JXL_DEC_COLOR_ENCODING) chooseColors();
        if (status == JXL_DEC_NEED_IMAGE_OUT_BUFFER)
            check(JxlDecoderSetImageOutBuffer(decoder, &format_, picture_.data(), picture_.size()));
        if (status == JXL_DEC_SUCCESS) throw Failure{formats::kDamaged};
    }
    decoder_.reset();
    file_.clear();
    file_.shrink_to_fit();
}

// Where the library is free to choose, the colours are those of sRGB.
void JxlLoader::chooseColors() const {
    if (info_.uses_original_profile) return;
    JxlColorEncoding colors{};
    JxlColorEncodingSetToSRGB(&colors, info_.num_color_channels == 1);
    check(JxlDecoderSetPreferredColorProfile(decoder_.get(), &colors));
}

}  // namespace jxl_format
