#include "formats/tiff/tiff_file.h"

#include <vorn/support.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <utility>

#include "formats/common/picture_limit.h"

namespace tiff_format {

using formats::Failure;

TiffFile::TiffFile(formats::InputFile file) : in_(std::move(file)), failure_{formats::kDamaged} {
    end_ = static_cast<toff_t>(std::max<int64_t>(in_.size(), 0));
    open("rm");
}

TiffFile::TiffFile(formats::OutputFile& file, bool large)
    : out_(&file), failure_{formats::kCannotSave} {
    open(large ? "w8" : "w");
}

void TiffFile::open(const char* mode) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (!options) throw Failure{formats::kOutOfMemory};
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, formats::kMostHeldBytes);
    TIFFOpenOptionsSetErrorHandlerExtR(options, &report, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options, &report, nullptr);
    tiff_ = TIFFClientOpenExt(
        "tiff", mode, this, &read, &write, &seek, [](thandle_t) { return 0; }, &size, nullptr,
        nullptr, options);
    TIFFOpenOptionsFree(options);
    check(tiff_ != nullptr);
}

void TiffFile::check(bool succeeded) const {
    if (!succeeded) throw failure_;
}

void TiffFile::close() {
    if (tiff_) TIFFCleanup(std::exchange(tiff_, nullptr));
}

int TiffFile::report(TIFF*, void*, const char* module, const char* format, va_list arguments) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    dblog("tiff: %s: %s\n", module ? module : "", text);
    return 1;
}

template <class Body>
auto TiffFile::guarded(thandle_t handle, Body body) -> decltype(body()) {
    auto& self = *static_cast<TiffFile*>(handle);
    try {
        return body();
    } catch (const Failure& failure) {
        self.failure_ = failure;
    } catch (...) {
        self.failure_ = Failure{formats::kOutOfMemory};
    }
    return -1;
}

tmsize_t TiffFile::read(thandle_t handle, void* bytes, tmsize_t count) {
    auto& self = *static_cast<TiffFile*>(handle);
    if (self.out_) return 0;
    return guarded(handle, [&] {
        self.in_.seek(static_cast<int64_t>(self.place_));
        const size_t got = self.in_.read(bytes, static_cast<size_t>(count));
        self.place_ += got;
        return static_cast<tmsize_t>(got);
    });
}

tmsize_t TiffFile::write(thandle_t handle, void* bytes, tmsize_t count) {
    auto& self = *static_cast<TiffFile*>(handle);
    return guarded(handle, [&] {
        self.out_->write(bytes, static_cast<size_t>(count));
        self.place_ += static_cast<toff_t>(count);
        self.end_ = std::max(self.end_, self.place_);
        return count;
    });
}

toff_t TiffFile::seek(thandle_t handle, toff_t offset, int origin) {
    auto& self = *static_cast<TiffFile*>(handle);
    const toff_t from = origin == SEEK_CUR ? self.place_ : origin == SEEK_END ? self.end_ : 0;
    if (static_cast<int64_t>(from + offset) < 0) return static_cast<toff_t>(-1);
    self.place_ = from + offset;
    if (!self.out_) return self.place_;
    const tmsize_t moved = guarded(handle, [&]() -> tmsize_t {
        self.out_->seek(static_cast<int64_t>(self.place_));
        return 0;
    });
    return moved < 0 ? static_cast<toff_t>(-1) : self.place_;
}

toff_t TiffFile::size(thandle_t handle) { return static_cast<TiffFile*>(handle)->end_; }

}  // namespace tiff_format
