// What a module program tells a test when it does its one thing.
#pragma once

#include <vorn/types.h>

#include <optional>
#include <string>
#include <thread>

#include "tests/conversation/module_home.h"
#include "tests/modules/steps.h"

// The named pipes between the test and the module, and what the module tells when its step has
// come.
class Wire {
  public:
    Wire();
    ~Wire();
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    // What was told, without waiting.
    std::optional<StepNews> news() const;
    // Waits for the module's word, or for `giveUp`.
    std::optional<StepNews> await() const;
    void giveUp() const;
    // Lets a child end that a module has left behind.
    void releaseChild() const;

  private:
    std::string pipePath_ = moduleHome().path("pipe");
    std::string leashPath_ = moduleHome().path("leash");
    int pipe_ = -1;
    int leash_ = -1;
    ScopedVariable pipeVariable_{"VORN_TEST_PIPE", pipePath_};
    ScopedVariable leashVariable_{"VORN_TEST_LEASH", leashPath_};
};

// Stops the handle from another thread as soon as the module gives word.
class Stopper {
  public:
    Stopper(const Wire& wire, VORN_Image* image);
    ~Stopper() { finish(); }
    Stopper(const Stopper&) = delete;
    Stopper& operator=(const Stopper&) = delete;

    // What the module told, if it did.
    std::optional<StepNews> finish();
    // When the stop began.
    long long stoppedAt() const { return stoppedAt_; }

  private:
    const Wire& wire_;
    std::optional<StepNews> news_;
    long long stoppedAt_ = 0;
    std::thread thread_;
};

long long steadyNanoseconds();
