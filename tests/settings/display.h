// A display without a screen, for one test, and a user at its keyboard.
#pragma once

#include <optional>

#include "tests/support/program.h"

class TestDisplay {
  public:
    // Waits until the display can be connected to, and names it in the environment.
    TestDisplay();

    // Waits for a window with this title and gives it the keyboard.
    void focus(const std::string& title) const;

    // Presses keys, as xdotool names them, one after the other.
    void press(const Arguments& keys) const;

    void end() { server_.reset(); }

  private:
    std::optional<Program> server_;
};
