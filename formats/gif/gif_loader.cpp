#include "formats/gif/gif_loader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "formats/common/exif.h"
#include "formats/common/picture_limit.h"
#include "formats/common/utf8.h"

namespace gif {
namespace {

using formats::Failure;

constexpr size_t kHeadSize = 6;
constexpr int kAspectOffset = 15;  // a pixel is (byte + 15) / 64 times as wide as high
constexpr int kAspectParts = 64;

}  // namespace

formats::Description GifLoader::open(formats::InputFile file) {
    file_ = std::move(file);
    char head[kHeadSize];
    if (file_.read(head, sizeof head) != sizeof head ||
        (std::memcmp(head, "GIF87a", kHeadSize) != 0 &&
         std::memcmp(head, "GIF89a", kHeadSize) != 0))
        throw Failure{formats::kNotThisFormat};
    const int32_t pages = std::max(countFrames(), 1);
    if (wishes().page < 1 || wishes().page > pages) throw Failure{formats::kNoSuchPage};
    start();
    if (!findFrame()) frame_.lost = true;
    width_ = static_cast<size_t>(std::max(gif_->SWidth, 0));
    height_ = static_cast<size_t>(std::max(gif_->SHeight, 0));
    if (width_ == 0 || height_ == 0) {  // some files leave it to the first frame
        width_ = frame_.left + frame_.width;
        height_ = frame_.top + frame_.height;
    }
    if (width_ == 0 || height_ == 0) throw Failure{formats::kDamaged};
    const bool whole = frame_.left == 0 && frame_.top == 0 && frame_.width == width_ &&
                       frame_.height == height_ && !frame_.colors.empty();

    formats::Description image;
    image.width = static_cast<int32_t>(width_);
    image.height = static_cast<int32_t>(height_);
    image.tags.number(ITAG_PageNumber, wishes().page);
    image.tags.number(ITAG_PageCount, pages);
    if (wishes().page == 1 && whole && frame_.transparent == NO_TRANSPARENT_COLOR) {
        image.channels = 1;
        image.colorSpace = VORN_CS_CMAPPED;
        image.tags.palette(frame_.colors);
        if (frame_.interlaced) indices_ = readFrame();
    } else {
        paintPages();
        image.alpha = isSeeThrough();
        image.channels = image.alpha ? 4 : 3;
        channels_ = static_cast<size_t>(image.channels);
    }
    formats::Exif notes;
    if (gif_->AspectByte != 0) setAspect(notes, kAspectParts, gif_->AspectByte + kAspectOffset);
    describe(notes, image);
    if (!comment_.empty()) image.tags.text(ITAG_Description, comment_);
    return image;
}

int GifLoader::readBytes(GifFileType* gif, GifByteType* bytes, int count) {
    auto* loader = static_cast<GifLoader*>(gif->UserData);
    try {
        const size_t got = loader->file_.read(bytes, static_cast<size_t>(count));
        loader->lastByte_ = got > 0 ? bytes[got - 1] : -1;
        return static_cast<int>(got);
    } catch (const Failure& failure) {
        loader->failure_ = failure;
    } catch (...) {
        loader->failure_ = Failure{formats::kOutOfMemory};
    }
    return 0;
}

void GifLoader::start() {
    gif_.reset();
    file_.seek(0);
    frame_ = Frame();
    gif_.reset(DGifOpen(this, &readBytes, nullptr));
    check(gif_ != nullptr);
}

void GifLoader::check(bool succeeded) const {
    if (!succeeded) throw failure_;
}

// What stands behind the first damage is not counted.
int32_t GifLoader::countFrames() {
    start();
    int32_t frames = 0;
    try {
        for (; findFrame(); ++frames) {
            skipData();
        }
    } catch (const Failure& failure) {
        if (failure.code != formats::kDamaged) throw;
        ++frames;  // it has begun
    }
    comment_.clear();
    return frames;
}

void GifLoader::skipData() {
    if (frame_.lost) return;
    if (wideCodes_) {
        wideCodes_->skipRest();
        return;
    }
    GifByteType* block = nullptr;
    int size = 0;
    check(DGifGetCode(gif_.get(), &size, &block) == GIF_OK);
    while (block) check(DGifGetCodeNext(gif_.get(), &block) == GIF_OK);
}

// Goes to the next frame; false at the end of the file.
bool GifLoader::findFrame() {
    if (frame_.lost) return false;
    frame_.transparent = NO_TRANSPARENT_COLOR;
    frame_.disposal = DISPOSAL_UNSPECIFIED;
    for (;;) {
        GifRecordType kind = UNDEFINED_RECORD_TYPE;
        check(DGifGetRecordType(gif_.get(), &kind) == GIF_OK);
        if (kind == TERMINATE_RECORD_TYPE) return false;
        if (kind == EXTENSION_RECORD_TYPE) {
            readExtension();
        } else if (kind == IMAGE_DESC_RECORD_TYPE) {
            readFrameHead();
            return true;
        }
    }
}

void GifLoader::readExtension() {
    int kind = 0;
    GifByteType* block = nullptr;
    check(DGifGetExtension(gif_.get(), &kind, &block) == GIF_OK);
    std::string comment;
    for (; block; check(DGifGetExtensionNext(gif_.get(), &block) == GIF_OK)) {
        // Blocks begin with their length.
        GraphicsControlBlock control;
        if (kind == GRAPHICS_EXT_FUNC_CODE &&
            DGifExtensionToGCB(block[0], block + 1, &control) == GIF_OK) {
            frame_.transparent = control.TransparentColor;
            frame_.disposal = control.DisposalMode;
        }
        if (kind == COMMENT_EXT_FUNC_CODE && comment.size() < formats::kLongestText)
            comment.append(reinterpret_cast<const char*>(block + 1), block[0]);
    }
    if (comment_.empty())
        comment_ = formats::utf8FromUnknown(comment.substr(0, comment.find('\0')));
}

void GifLoader::readFrameHead() {
    GifImageDesc& image = gif_->Image;
    image.Width = image.Height = -1;
    const bool understood = DGifGetImageDesc(gif_.get()) == GIF_OK;
    wideCodes_.reset();
    frame_.lost = !understood && (image.Width == 0 || image.Height == 0);
    if (!understood && !frame_.lost) {
        check(image.Height > 0 && lastByte_ > 8 && lastByte_ <= WideCodes::kMostBits);
        wideCodes_.emplace(file_, lastByte_);
    }
    frame_.left = static_cast<size_t>(image.Left);
    frame_.top = static_cast<size_t>(image.Top);
    frame_.width = static_cast<size_t>(image.Width);
    frame_.height = static_cast<size_t>(image.Height);
    frame_.interlaced = image.Interlace;
    frame_.colors.clear();
    const ColorMapObject* map = image.ColorMap ? image.ColorMap : gif_->SColorMap;
    for (int i = 0; map && i < map->ColorCount; ++i)
        frame_.colors.insert(frame_.colors.end(),
                             {map->Colors[i].Red, map->Colors[i].Green, map->Colors[i].Blue});
}

void GifLoader::readFrameLine(uint8_t* line) {
    if (wideCodes_)
        std::generate_n(line, frame_.width, [this] { return wideCodes_->next(); });
    else
        check(DGifGetLine(gif_.get(), line, static_cast<int>(frame_.width)) == GIF_OK);
}

std::vector<uint8_t> GifLoader::readFrame() {
    std::vector<uint8_t> indices(formats::heldBytes(static_cast<int64_t>(frame_.height),
                                                    static_cast<int64_t>(frame_.width)));
    if (indices.empty()) {  // a frame without pixels may have data all the same
        skipData();
        return indices;
    }
    const size_t passes = frame_.interlaced ? 4 : 1;
    constexpr size_t kFirst[] = {0, 4, 2, 1};
    constexpr size_t kStep[] = {8, 8, 4, 2};
    for (size_t pass = 0; pass < passes; ++pass) {
        for (size_t y = kFirst[pass]; y < frame_.height; y += frame_.interlaced ? kStep[pass] : 1)
            readFrameLine(&indices[y * frame_.width]);
    }
    if (wideCodes_) wideCodes_->skipRest();
    return indices;
}

// A page is what is to be seen when its frame is shown, over what those before it have left.
void GifLoader::paintPages() {
    canvas_.assign(
        formats::heldBytes(static_cast<int64_t>(height_), static_cast<int64_t>(width_ * 4)), 0);
    for (int32_t page = 1;; ++page) {
        if (frame_.disposal == DISPOSE_PREVIOUS) before_ = canvas_;
        drawFrame();
        if (page == wishes().page) return;
        disposeOfFrame();
        check(findFrame());
    }
}

bool GifLoader::isSeeThrough() const {
    for (size_t at = 3; at < canvas_.size(); at += 4) {
        if (canvas_[at] == 0) return true;
    }
    return false;
}

void GifLoader::drawFrame() {
    const std::vector<uint8_t> indices = readFrame();
    const size_t colors = frame_.colors.size() / 3;
    for (size_t y = 0; y < frame_.height && frame_.top + y < height_; ++y) {
        for (size_t x = 0; x < frame_.width && frame_.left + x < width_; ++x) {
            const size_t index = indices[y * frame_.width + x];
            if (static_cast<int>(index) == frame_.transparent || index >= colors) continue;
            uint8_t* pixel = &canvas_[((frame_.top + y) * width_ + frame_.left + x) * 4];
            std::copy_n(&frame_.colors[3 * index], 3, pixel);
            pixel[3] = 255;
        }
    }
}

void GifLoader::disposeOfFrame() {
    if (frame_.disposal == DISPOSE_PREVIOUS) canvas_ = before_;
    if (frame_.disposal != DISPOSE_BACKGROUND || frame_.left >= width_) return;
    const size_t width = std::min(frame_.width, width_ - frame_.left);
    for (size_t y = frame_.top; y < std::min(frame_.top + frame_.height, height_); ++y)
        std::fill_n(&canvas_[(y * width_ + frame_.left) * 4], width * 4, uint8_t{0});
}

void GifLoader::readLine(uint8_t* line) {
    const size_t at = line_++;
    if (!canvas_.empty())
        for (size_t x = 0; x < width_; ++x)
            std::copy_n(&canvas_[(at * width_ + x) * 4], channels_, line + x * channels_);
    else if (!indices_.empty())
        std::copy_n(&indices_[at * width_], width_, line);
    else
        readFrameLine(line);
}

}  // namespace gif
