// Message queues. Every thread has one, made when the thread first uses it; programs of the same
// user can post to it. A queue is short: what doesn't fit is lost.
#pragma once

#include <cstdint>

namespace vorn::platform {

struct ThreadMessage {
    uint32_t number = 0;  // 0: the null message, which only wakes
    uint32_t word = 0;
    uint32_t longWord = 0;
};

// False when the thread has no queue, or no room in it.
bool postThreadMessage(int32_t thread, const ThreadMessage& message);

// Takes the next message out of the calling thread's queue. False when there is none.
bool peekThreadMessage(ThreadMessage& message);

// What the calling thread's messages are dispatched to (null: to nothing). Null messages never
// arrive.
using MessageProcedure = void (*)(const ThreadMessage& message);
void setMessageProcedure(MessageProcedure procedure);
void dispatchThreadMessage(const ThreadMessage& message);

// Sleeps for at most that long, until the calling thread's queue holds a message. True when the
// watched process has ended or the stop semaphore is posted; kNoDescriptor watches nothing.
bool pauseForMessage(int32_t watched, int32_t stop, int32_t microseconds);

}  // namespace vorn::platform
