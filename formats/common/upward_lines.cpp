#include "formats/common/upward_lines.h"

#include <algorithm>

namespace formats {
namespace {

constexpr size_t kBlockBytes = 65536;

}  // namespace

void UpwardLines::start(InputFile& file, int64_t place, size_t lineBytes, size_t lines) {
    file_ = &file;
    place_ = place;
    lineBytes_ = lineBytes;
    left_ = lines;
    held_ = 0;
}

const uint8_t* UpwardLines::next() {
    if (held_ == 0) {
        held_ = std::min(left_, std::max(kBlockBytes / lineBytes_, size_t{1}));
        left_ -= held_;
        block_.resize(held_ * lineBytes_);
        file_->seek(place_ + static_cast<int64_t>(left_ * lineBytes_));
        file_->readExactly(block_.data(), block_.size());
    }
    return &block_[--held_ * lineBytes_];
}

}  // namespace formats
