// Programs that do one thing at one step of a conversation. A program is given this ability by
// being linked with steps.cpp: see vorn_count_steps in CMakeLists.txt.
//
// A step is the start of a module program, the making of a host's objects, and each wait, look and
// post at one of the connection's semaphores, as that begins; a wait or look that took the
// semaphore is a second one behind it: the message has come, or the area to write to is free. Steps
// count from 1.
//
// The order stands in the environment variable that the program was built with, as "ACTION STEP".
// When the step has come, one line that describes it is written to the named pipe
// VORN_TEST_PIPE, and the action is done. Actions are named in steps.cpp.
#pragma once

#include <functional>

// For a test that is a host itself: counting begins anew, and the hook is called at the step.
void atStep(int step, std::function<void()> hook);

// The line that is written. The time is that of the steady clock, in nanoseconds.
struct StepNews {
    char description[24];
    long long time;
};
