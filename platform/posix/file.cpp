#include "platform/file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/path.h"

namespace vorn::platform {
namespace {

constexpr mode_t kNewFileMode = 0666;
constexpr unsigned kMostNames = 10000;  // files that are written in a directory at once
constexpr unsigned kSearchedNames = 8;  // for what was left over

// Calls a system function again as long as a signal interrupts it.
template <class Call>
auto retry(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) result = call();
    return result;
}

int openFile(const char* path, int flags, mode_t mode = 0) {
    return retry([&] { return ::open(path, flags | O_CLOEXEC, mode); });
}

// The directory part of a path, "." when it has none.
void directoryOf(const char* path, char* out) {
    std::strcpy(out, path);
    char* slash = std::strrchr(out, kSeparator);
    if (!slash)
        std::strcpy(out, ".");
    else if (slash == out)
        slash[1] = '\0';
    else
        *slash = '\0';
}

// Gives a new file the old one's permissions, and its owner where that is allowed.
int32_t takeOver(int descriptor, const struct stat& old) {
    [[maybe_unused]] const bool owned = ::fchown(descriptor, old.st_uid, old.st_gid) == 0;
    return ::fchmod(descriptor, old.st_mode & 0777) == 0 ? 0 : errno;
}

// A file has its owner's lock as long as it has a temporary name, so a name with a file that can be
// locked is a killed program's: nobody but who has that lock changes what the name means. Where the
// file system has no locks, nothing is taken for left over.
void removeLeftOver(const char* name) {
    const int file = openFile(name, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    if (file < 0) return;
    struct stat locked {};
    struct stat named {};
    const bool isLeft = ::flock(file, LOCK_EX | LOCK_NB) == 0 && ::fstat(file, &locked) == 0 &&
                        ::lstat(name, &named) == 0 && S_ISREG(named.st_mode) &&
                        locked.st_ino == named.st_ino && locked.st_dev == named.st_dev;
    if (isLeft) ::unlink(name);
    ::close(file);
}

// False when it has been taken for left over before it could be locked.
bool lockNew(int file) {
    struct stat status {};
    const bool taken = ::flock(file, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    return !taken && ::fstat(file, &status) == 0 && status.st_nlink > 0;
}

}  // namespace

File::~File() {
    if (temporary_) ::unlink(temporary_);  // as long as it is locked
    if (descriptor_ >= 0) ::close(descriptor_);
    std::free(target_);
    std::free(temporary_);
}

int32_t File::openForReading(const char* path) {
    descriptor_ = openFile(path, O_RDONLY);
    if (descriptor_ < 0) return errno;
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) return errno;
    return S_ISDIR(status.st_mode) ? EISDIR : 0;
}

int32_t File::openForReplacing(const char* path) {
    if (std::strlen(path) >= kMaxPath) return ENAMETOOLONG;
    struct stat status {};
    const bool exists = ::stat(path, &status) == 0;
    if (exists) {
        if (S_ISDIR(status.st_mode)) return EISDIR;
        if (::access(path, W_OK) != 0) return errno;
        const bool isFile = S_ISREG(status.st_mode);
        if (!isFile || status.st_nlink == 0) {
            descriptor_ = openFile(path, isFile ? O_RDWR | O_TRUNC : O_WRONLY);
            return descriptor_ < 0 ? errno : 0;
        }
    }
    // Replacing the file that a link leads to keeps the link.
    target_ = exists ? ::realpath(path, nullptr) : ::strdup(path);
    if (!target_) return errno;
    char directory[kMaxPath];
    directoryOf(target_, directory);
    descriptor_ = openFile(directory, O_TMPFILE | O_RDWR, kNewFileMode);
    if (descriptor_ < 0 && errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT) return errno;
    if (descriptor_ < 0) {
        if (const int32_t error = takeName(&File::createAs)) return error;
    }
    return exists ? takeOver(descriptor_, status) : 0;
}

// The name doesn't hold the target's, which may be as long as a name can be.
int32_t File::nameBeside(char (&out)[kMaxPath], unsigned number) const {
    char directory[kMaxPath];
    directoryOf(target_, directory);
    const int length =
        std::snprintf(out, sizeof out, "%s%c.vorn-%u.tmp", directory, kSeparator, number);
    return length > 0 && static_cast<size_t>(length) < sizeof out ? 0 : ENAMETOOLONG;
}

void File::removeLeftOvers() const {
    char name[kMaxPath];
    for (unsigned number = 0; number < kSearchedNames && !nameBeside(name, number); ++number)
        removeLeftOver(name);
}

// `make` gives the file the name, or fails with EEXIST.
int32_t File::takeName(bool (File::*make)(const char* name)) {
    removeLeftOvers();
    char name[kMaxPath];
    for (unsigned number = 0; number < kMostNames; ++number) {
        if (const int32_t error = nameBeside(name, number)) return error;
        if ((this->*make)(name)) {
            temporary_ = ::strdup(name);
            if (temporary_) return 0;
            ::unlink(name);
            return ENOMEM;
        }
        if (errno != EEXIST) return errno;
    }
    return EEXIST;
}

// For file systems without unnamed files.
bool File::createAs(const char* name) {
    descriptor_ = openFile(name, O_CREAT | O_EXCL | O_RDWR, kNewFileMode);
    if (descriptor_ < 0 || lockNew(descriptor_)) return descriptor_ >= 0;
    ::close(descriptor_);
    descriptor_ = -1;
    errno = EEXIST;
    return false;
}

// Only a name can replace the target in one step.
bool File::linkAs(const char* name) {
    ::flock(descriptor_, LOCK_EX | LOCK_NB);
    char own[64];
    std::snprintf(own, sizeof own, "/proc/self/fd/%d", descriptor_);
    return ::linkat(AT_FDCWD, own, AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0;
}

int32_t File::read(void* buffer, size_t count, size_t& moved) {
    moved = 0;
    while (moved < count) {
        const ssize_t part = retry(
            [&] { return ::read(descriptor_, static_cast<char*>(buffer) + moved, count - moved); });
        if (part < 0) return errno;
        if (part == 0) return 0;
        moved += static_cast<size_t>(part);
    }
    return 0;
}

int32_t File::write(const void* buffer, size_t count, size_t& moved) {
    moved = 0;
    while (moved < count) {
        const ssize_t part = retry([&] {
            return ::write(descriptor_, static_cast<const char*>(buffer) + moved, count - moved);
        });
        if (part <= 0) return part < 0 ? errno : ENOSPC;
        moved += static_cast<size_t>(part);
    }
    return 0;
}

int32_t File::seek(int64_t position) {
    return ::lseek(descriptor_, position, SEEK_SET) < 0 ? errno : 0;
}

int32_t File::size(int64_t& bytes) const {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) return errno;
    bytes = status.st_size;
    return 0;
}

int32_t File::flush() {
    return retry([&] { return ::fsync(descriptor_); }) < 0 ? errno : 0;
}

int32_t File::commit() {
    if (!target_) return 0;  // written directly
    if (!temporary_) {
        if (const int32_t error = takeName(&File::linkAs)) return error;
    }
    if (::rename(temporary_, target_) != 0) return errno;
    std::free(temporary_);
    std::free(target_);
    temporary_ = target_ = nullptr;
    return 0;
}

}  // namespace vorn::platform
