#include "platform/directory.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace vorn::platform {

DirectoryListing::~DirectoryListing() {
    if (stream_) ::closedir(static_cast<DIR*>(stream_));
}

bool DirectoryListing::open(const char* path, int32_t& error) {
    stream_ = ::opendir(path);
    error = stream_ ? 0 : errno;
    return stream_ != nullptr;
}

const char* DirectoryListing::next(bool& isDirectory) {
    auto* stream = static_cast<DIR*>(stream_);
    const dirent* entry = stream ? ::readdir(stream) : nullptr;
    if (!entry) return nullptr;
    isDirectory = entry->d_type == DT_DIR;
    if (entry->d_type == DT_LNK || entry->d_type == DT_UNKNOWN) {
        struct stat status {};
        isDirectory =
            ::fstatat(::dirfd(stream), entry->d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
    }
    return entry->d_name;
}

}  // namespace vorn::platform
