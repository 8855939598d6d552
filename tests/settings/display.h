// A display without a screen, for one test, and a user at its keyboard.
#pragma once

#include <string>
#include <vector>

#include "tests/support/program.h"

class TestDisplay {
  public:
    // Waits until the display can be connected to, and names it in the environment.
    TestDisplay();
    ~TestDisplay() { end(); }
    TestDisplay(const TestDisplay&) = delete;
    TestDisplay& operator=(const TestDisplay&) = delete;

    // Waits for a window with this title and gives it the keyboard.
    void focus(const std::string& title) const;

    // Presses keys, as xdotool names them, one after the other.
    void press(const std::vector<std::string>& keys) const;

    void end();

  private:
    pid_t server_ = -1;
};
