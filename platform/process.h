// Module programs, seen from the host; the host, seen from a module program.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn::platform {

// 0: no limit.
struct ProcessLimits {
    uint64_t addressSpaceBytes = 0;
    uint64_t cpuSeconds = 0;
};

struct ProcessStart {
    const char* path = nullptr;
    char* const* arguments = nullptr;  // ended by null; the first is the program's argv[0]
    const int32_t* inherited =
        nullptr;  // descriptors that the program inherits under their numbers
    size_t inheritedCount = 0;
    const char* application = "";  // what hostApplication() gives in the program
    ProcessLimits limits;
};

struct Process {
    int32_t watch = -1;  // a descriptor that waits end on when the program has ended
    int32_t line = -1;   // as long as it is open, the program has a host
    int32_t id = -1;
};

// Starts a program without disturbing anything in this one: no descriptor leaks into it but the
// inherited ones (standard error is shared, standard input and output are empty), no signal comes
// when it ends, it is no child that this program's waits could find, and it goes on when the
// calling thread ends. The result is 0 or the system's error number.
int32_t startProcess(const ProcessStart& start, Process& process);

bool hasEnded(const Process& process);

// Ends the program at once, whatever it does.
void killProcess(const Process& process);

// Releases what the record holds of a program that is ending. The program itself may go on for a
// short time, see kLastMilliseconds; it is not waited for. Where this program is the system's
// reaper, it collects the end, and so waits for it as long as that may take.
void releaseProcess(Process& process);

// The calling thread's number, as it stands on module command lines.
int32_t currentThreadId();

// In a module program: a descriptor that waits end on when the host program has ended, or
// kNoDescriptor when there is none. `hostThread` is the number on the command line. False when the
// host has ended already.
bool watchHost(int32_t hostThread, int32_t& watch);

// What a module program has to end from when its host has released it or has ended, see
// platform/limits.h.
inline constexpr int kLastMilliseconds = 1000;

// In a module program: what its host gave as its application; null when there is none.
const char* hostApplication();

}  // namespace vorn::platform
