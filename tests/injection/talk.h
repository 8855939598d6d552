// One conversation with the modules "injected", in a test or in a host of its own.
#pragma once

#include <string>

#include "tests/conversation/host.h"

// One way through a conversation.
enum class Kind { Loading, Aborting, Saving };
const char* nameOf(Kind kind);
inline void PrintTo(Kind kind, std::ostream* out) { *out << nameOf(kind); }

// The module's handle, and the same conversation again and again.
class Talk : public Module {
  public:
    // A saver writes the file "saved" in the directory.
    Talk(Kind kind, const std::string& directory);

    // Opens, sends a command (to a loader), and transfers. True when all of it went as it should.
    bool whole();
    // Whether a call said that it was done, and what came of it is not what it should be.
    bool isWrong() const { return wrong_; }

    // Whether the saved file is there with all that belongs into it.
    static bool isWhole(const std::string& directory);

    // Closes the connection; the handle stays.
    void closeConnection() { VORN_L_ImageCloseHandle(get()); }

  private:
    bool load();
    bool save();
    bool command();

    Kind kind_;
    std::string target_;
    bool wrong_ = false;
};

class InjectedTest : public ConversationTest {
  protected:
    InjectedTest() { installInjected(); }
    const std::string directory_ = moduleHome().makeDirectory("target");
};
