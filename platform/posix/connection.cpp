#include "platform/connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "platform/posix/descriptor.h"
#include "platform/posix/waits.h"

namespace vorn::platform {
// A bound address of the abstract namespace: it belongs to the socket, and the kernel frees it with
// the last descriptor.
Reservation reserveName(const char* name, int32_t& reservation) {
    reservation = aboveStandardStreams(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (reservation < 0) return Reservation::Failed;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const int length = std::snprintf(address.sun_path + 1, sizeof address.sun_path - 1,
                                     "vorn/%lu/%s", static_cast<unsigned long>(::getuid()), name);
    const auto size =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + static_cast<size_t>(length));
    if (::bind(reservation, reinterpret_cast<const sockaddr*>(&address), size) == 0)
        return Reservation::Reserved;
    const bool inUse = errno == EADDRINUSE;
    releaseName(reservation);
    reservation = kNoDescriptor;
    return inUse ? Reservation::InUse : Reservation::Failed;
}

void releaseName(int32_t reservation) { closeDescriptor(reservation); }

int32_t createBlock(size_t size, const char* name) {
    const int32_t block =
        aboveStandardStreams(::memfd_create(name, MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (block < 0) return kNoDescriptor;
    if (::ftruncate(block, static_cast<off_t>(size)) == 0 &&
        ::fcntl(block, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) == 0) {
        return block;
    }
    closeDescriptor(block);
    return kNoDescriptor;
}

bool blockHolds(int32_t block, size_t size) {
    struct stat status {};
    return ::fstat(block, &status) == 0 && status.st_size >= 0 &&
           static_cast<size_t>(status.st_size) >= size;
}

void* mapBlock(int32_t block, size_t size) {
    void* base = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, block, 0);
    return base == MAP_FAILED ? nullptr : base;
}

void unmapBlock(void* base, size_t size) {
    if (base) ::munmap(base, size);
}

int32_t createSemaphore() {
    return aboveStandardStreams(::eventfd(0, EFD_SEMAPHORE | EFD_CLOEXEC | EFD_NONBLOCK));
}

bool isSemaphore(int32_t semaphore) { return ::fcntl(semaphore, F_GETFD) >= 0; }

// A peer that holds the same open file could fill the count and make it blocking. A full count
// needs no post.
bool postSemaphore(int32_t semaphore) {
    pollfd state{semaphore, POLLIN | POLLOUT, 0};
    int ready = 0;
    do {
        ready = ::poll(&state, 1, 0);
    } while (ready < 0 && errno == EINTR);
    if (state.revents & POLLOUT) postTrustedSemaphore(semaphore);
    return !(state.revents & POLLIN);
}

void postTrustedSemaphore(int32_t semaphore) {
    const uint64_t one = 1;
    ssize_t done = 0;
    do {
        done = ::write(semaphore, &one, sizeof one);
    } while (done < 0 && errno == EINTR);
}

// The peer holds the same open file and could make it blocking, so the read itself says that it
// must not block.
bool tryWaitSemaphore(int32_t semaphore) {
    uint64_t count = 0;
    const iovec part{&count, sizeof count};
    ssize_t taken = 0;
    do {
        taken = ::preadv2(semaphore, &part, 1, -1, RWF_NOWAIT);
    } while (taken < 0 && errno == EINTR);
    if (taken > 0) orderAsTaken(semaphore);
    return taken == static_cast<ssize_t>(sizeof count);
}

bool waitSemaphore(int32_t semaphore, int32_t watched, int32_t stop, WaitHistory& history) {
    const auto tryOnce = [&] { return tryWaitSemaphore(semaphore); };
    return tryOnce() || tryForAWhile(history, tryOnce) ||
           sleepUntilTaken(semaphore, watched, stop, tryOnce);
}

// What failed before stays known.
void closeDescriptor(int32_t descriptor) {
    const int error = errno;
    if (descriptor >= 0) ::close(descriptor);
    errno = error;
}

}  // namespace vorn::platform
