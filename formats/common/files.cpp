#include "formats/common/files.h"

#include <vorn/library.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "formats/common/failure.h"

namespace formats {
namespace {

constexpr size_t kByteBufferSize = 16384;
constexpr size_t kLongestCall = 1 << 30;  // the file functions count in 32 bits

FileHandle openFile(const std::string& path, int32_t mode) {
    FileHandle file(BOpenFile(path.c_str(), mode));
    if (!file) throw Failure{kCannotOpen, BGetErrorCode()};
    return file;
}

}  // namespace

InputFile::InputFile(const std::string& path) : file_(openFile(path, BFILE_Read)) {}

size_t InputFile::read(void* destination, size_t count) {
    auto* bytes = static_cast<uint8_t*>(destination);
    size_t done = std::min(count, end_ - start_);
    if (done > 0) std::memcpy(bytes, buffer_.data() + start_, done);
    start_ += done;
    while (done < count) {
        const size_t wanted = std::min(count - done, kLongestCall);
        const int32_t got =
            VORN_M_BReadNoEOF(file_.get(), bytes + done, static_cast<int32_t>(wanted));
        if (got == 0 && BGetErrorCode() != 0) throw kAlreadyNoted;
        done += static_cast<size_t>(got);
        if (static_cast<size_t>(got) < wanted) break;
    }
    return done;
}

void InputFile::readExactly(void* destination, size_t count) {
    if (read(destination, count) != count) throw Failure{kDamaged};
}

void InputFile::seek(int64_t position) {
    start_ = end_ = 0;
    const int64_t end = size();  // 0 of a pipe
    if (position < 0 || (end > 0 && position > end)) throw Failure{kDamaged};
    if (VORN_M_BSeek(file_.get(), position, 0) < 0) throw kAlreadyNoted;
}

int64_t InputFile::size() const { return BFileSize(file_.get()); }

bool InputFile::fill() {
    buffer_.resize(kByteBufferSize);
    start_ = end_ = 0;
    end_ = read(buffer_.data(), buffer_.size());
    return end_ > 0;
}

OutputFile::OutputFile(const std::string& path) : file_(openFile(path, BFILE_Write)) {}

void OutputFile::write(const void* source, size_t count) {
    const auto* bytes = static_cast<const uint8_t*>(source);
    while (count > 0) {
        const auto part = static_cast<int32_t>(std::min(count, kLongestCall));
        if (VORN_M_BWrite(file_.get(), bytes, part) != part) throw kAlreadyNoted;
        bytes += part;
        count -= static_cast<size_t>(part);
    }
}

void OutputFile::seek(int64_t position) {
    if (VORN_M_BSeek(file_.get(), position, 0) < 0) throw kAlreadyNoted;
}

void OutputFile::commit() {
    if (!BCommit(file_.get())) throw Failure{kCannotWrite, BGetErrorCode()};
}

std::string fileName(const VORN_TagItem* message) {
    const VORN_TagItem* item = VORN_L_TagFind(message, ITAG_Filename);
    if (!item) throw Failure{kNoFileName};
    const std::unique_ptr<char, void (*)(char*)> text(VORN_L_TagGetString(item),
                                                      VORN_L_TagFreeString);
    if (!text) throw Failure{kOutOfMemory};
    if (!*text) throw Failure{kNoFileName};
    return text.get();
}

std::string fileEnding(const std::string& name) {
    const size_t point = name.find_last_of("./");
    if (point == std::string::npos || name[point] != '.') return {};
    std::string ending = name.substr(point + 1);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending;
}

}  // namespace formats
