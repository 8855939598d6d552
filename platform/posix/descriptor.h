// Numbers of descriptors.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace vorn::platform {

// The standard streams' numbers are never used, even when they are closed.
inline constexpr int kFirstDescriptor = 3;

// Moves a new descriptor out of the way of the standard streams. A negative number (a failed call)
// stays as it is, and so does errno.
inline int32_t aboveStandardStreams(int descriptor) {
    if (descriptor < 0 || descriptor >= kFirstDescriptor) return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstDescriptor);
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return moved;
}

}  // namespace vorn::platform
