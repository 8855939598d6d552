// A conversation with a module program that does one thing at one step.
#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <thread>

#include "tests/conversation/host.h"
#include "tests/modules/steps.h"

// One way through a conversation.
enum class Kind { Loading, Aborting, Saving };
const char* nameOf(Kind kind);

// The module's handle, and the same conversation again and again.
class Talk {
  public:
    explicit Talk(Kind kind);

    // Opens, sends a command (to a loader), and transfers. True when all of it went as it should.
    bool whole();
    // Whether a call said that it was done, and what came of it is not what it should be.
    bool isWrong() const { return wrong_; }

    Module& module() { return module_; }
    // Closes the connection; the handle stays.
    void closeConnection() { VORN_L_ImageCloseHandle(module_); }

  private:
    bool load();
    bool save();
    bool command();

    Kind kind_;
    Module module_;
    bool wrong_ = false;
};

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
