#include "platform/scratch.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <limits>

#include "platform/environment.h"
#include "platform/path.h"

namespace vorn::platform {
namespace {

// A file without a name, so that no end of this program leaves it behind. Where the file system
// knows no such files, the name lives for a moment.
int openUnnamed(const char* directory) {
    const int unnamed = ::open(directory, O_TMPFILE | O_RDWR | O_EXCL | O_CLOEXEC, 0600);
    if (unnamed >= 0 || (errno != EOPNOTSUPP && errno != EISDIR)) return unnamed;
    char name[kMaxPath];
    const int length = std::snprintf(name, sizeof name, "%s/vorn-XXXXXX", directory);
    if (length < 0 || static_cast<size_t>(length) >= sizeof name) {
        errno = ENAMETOOLONG;
        return -1;
    }
    const int named = ::mkostemp(name, O_CLOEXEC);
    if (named >= 0) ::unlink(name);
    return named;
}

// Blocks that the disk has not reserved would be missed when they are touched, which is no moment
// to report it.
int32_t reserve(int descriptor, size_t size) {
    if (size > static_cast<size_t>(std::numeric_limits<off_t>::max())) return EFBIG;
    int32_t error = EINTR;
    while (error == EINTR) error = ::posix_fallocate(descriptor, 0, static_cast<off_t>(size));
    return error;
}

}  // namespace

const char* scratchFolder() {
    const char* const chosen = environmentVariable("TMPDIR");
    return chosen && *chosen ? chosen : "/var/tmp";
}

int32_t mapScratch(size_t size, void*& bytes) {
    const int descriptor = openUnnamed(scratchFolder());
    if (descriptor < 0) return errno;
    int32_t error = reserve(descriptor, size);
    if (!error) {
        bytes = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        if (bytes == MAP_FAILED) error = errno;
    }
    ::close(descriptor);  // the mapping holds the file
    return error;
}

void unmapScratch(void* bytes, size_t size) { ::munmap(bytes, size); }

}  // namespace vorn::platform
