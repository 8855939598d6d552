// A host and a module in one program: the real shell runs on a thread of its own, with its own end
// of a real connection, and the test's thread plays the host.
#pragma once

#include <gtest/gtest.h>
#include <vorn/module.h>

#include <functional>
#include <string>
#include <thread>

#include "tests/transport/scripted_peer.h"

// A module's callbacks. Only those that are set are given to the shell.
struct Callbacks {
    std::function<void()> close = {};
    std::function<int32_t(const VORN_TagItem*)> loaderOpen = {};
    std::function<int32_t()> loaderBegin = {};
    std::function<void()> loaderRead = {};
    std::function<int32_t(const VORN_TagItem*)> saverOpen = {};
    std::function<int32_t()> saverBegin = {};
    std::function<int32_t()> saverWrite = {};
    std::function<void()> saverQuery = {};
    std::function<void(const VORN_TagItem*)> command = {};
    std::function<void()> beforeTheShell = {};
};

// Loaders and savers whose steps succeed and do nothing.
Callbacks plainLoader();
Callbacks plainSaver();

class Twin : public HostEnd {
  public:
    Twin(int32_t type, Callbacks callbacks);
    ~Twin();

    // Hands a message to the module once it has taken the last one.
    void send(const Bytes& message);

    // The module's next message; nothing when the shell has ended.
    Bytes receive();

    // Ends the shell and waits for it.
    void terminate();

    // The names of the callbacks that were called, in order. To be asked when the module has
    // answered what came before, or has ended.
    const std::string& calls() const { return calls_; }

  private:
    void runModule(std::vector<std::string> words);

    Callbacks callbacks_;
    std::string calls_;
    std::thread thread_;
};

// What the host says, and all that the shell sends in answer.
struct Turn {
    Bytes said;
    std::vector<Bytes> answers;
};

// A whole conversation behind the first acknowledgement, up to the end of the shell, which closes.
// The result is the callbacks' names as they were before the end.
std::string converse(int32_t type, const Callbacks& callbacks, const std::vector<Turn>& turns);
