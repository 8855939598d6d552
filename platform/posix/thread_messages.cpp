#include "platform/thread_messages.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "platform/connection.h"
#include "platform/posix/descriptor.h"
#include "platform/process.h"
#include "support/thread_state.h"

namespace vorn::platform {
namespace {

// A queue's address in the abstract namespace, which the kernel frees with the thread's descriptor.
struct QueueAddress {
    explicit QueueAddress(int32_t thread) {
        name.sun_family = AF_UNIX;
        const int length =
            std::snprintf(name.sun_path + 1, sizeof name.sun_path - 1, "vorn/%lu/thread/%d",
                          static_cast<unsigned long>(::geteuid()), thread);
        size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 +
                                      static_cast<size_t>(length));
    }
    const sockaddr* generic() const { return reinterpret_cast<const sockaddr*>(&name); }

    sockaddr_un name{};
    socklen_t size;
};

struct Queue {
    Queue()
        : socket(aboveStandardStreams(
              ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))) {
        const int on = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_PASSCRED, &on, sizeof on);
        const QueueAddress own(currentThreadId());
        ::bind(socket, own.generic(), own.size);  // without an address nothing arrives
    }
    ~Queue() { closeDescriptor(socket); }
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;

    int socket;
    MessageProcedure procedure = nullptr;
};

Queue& queue() { return threadState<Queue>(); }

// Any user may send to an address: the kernel says who has.
bool isFromThisUser(msghdr& received) {
    for (cmsghdr* head = CMSG_FIRSTHDR(&received); head; head = CMSG_NXTHDR(&received, head)) {
        if (head->cmsg_level != SOL_SOCKET || head->cmsg_type != SCM_CREDENTIALS) continue;
        ucred sender;
        std::memcpy(&sender, CMSG_DATA(head), sizeof sender);
        return sender.uid == ::geteuid();
    }
    return false;
}

}  // namespace

bool postThreadMessage(int32_t thread, const ThreadMessage& message) {
    const QueueAddress to(thread);
    return ::sendto(queue().socket, &message, sizeof message, MSG_NOSIGNAL, to.generic(),
                    to.size) == static_cast<ssize_t>(sizeof message);
}

bool peekThreadMessage(ThreadMessage& message) {
    for (;;) {
        iovec part{&message, sizeof message};
        alignas(cmsghdr) char credentials[CMSG_SPACE(sizeof(ucred))];
        msghdr received{};
        received.msg_iov = &part;
        received.msg_iovlen = 1;
        received.msg_control = credentials;
        received.msg_controllen = sizeof credentials;
        const ssize_t size = ::recvmsg(queue().socket, &received, 0);
        if (size < 0) return false;
        if (size == static_cast<ssize_t>(sizeof message) && isFromThisUser(received)) return true;
    }
}

void setMessageProcedure(MessageProcedure procedure) { queue().procedure = procedure; }

void dispatchThreadMessage(const ThreadMessage& message) {
    if (message.number && queue().procedure) queue().procedure(message);
}

bool pauseForMessage(int32_t watched, int32_t stop, int32_t microseconds) {
    pollfd waits[3] = {{watched, POLLIN, 0}, {stop, POLLIN, 0}, {queue().socket, POLLIN, 0}};
    const timespec time{0, microseconds * 1000L};
    return ::ppoll(waits, 3, &time, nullptr) > 0 && (waits[0].revents || waits[1].revents);
}

}  // namespace vorn::platform
