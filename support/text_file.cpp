#include "support/text_file.h"

#include <limits>

namespace vorn {
namespace {

struct FileCloser {
    void operator()(VORN_File* file) const { BClose(file); }
};

}  // namespace

Owned<char> readTextFile(const char* path, size_t& length) {
    const std::unique_ptr<VORN_File, FileCloser> file(BOpenFile(path, BFILE_Read));
    if (file == nullptr) {
        return nullptr;
    }
    const int64_t size = BFileSize(file.get());
    if (size < 0 || size >= std::numeric_limits<int32_t>::max()) {
        return nullptr;
    }
    Owned<char> text = allocCleared<char>(static_cast<size_t>(size) + 1);
    if (text == nullptr) {
        return nullptr;
    }
    const int32_t read = BRead(file.get(), text.get(), static_cast<int32_t>(size));
    if (BGetErrorCode() != 0) {
        return nullptr;
    }
    length = static_cast<size_t>(read);
    return text;
}

}  // namespace vorn
