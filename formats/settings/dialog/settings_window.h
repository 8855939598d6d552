// The window of the settings dialog.
#pragma once

#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "formats/settings/dialog/display.h"
#include "formats/settings/stored_text.h"

namespace settings {

class SettingsWindow {
  public:
    // A setting whose stored value is not valid begins with its default.
    SettingsWindow(const std::string& title,
                   const std::vector<Setting>& described,
                   const std::vector<Value>& values);

    // Shows the window until the user closes it, or the display is lost. True when it was closed
    // with OK. `owner` is the window that it belongs to, 0 for none.
    bool run(const DisplayConnection& connection, uintptr_t owner);

    // What the user has set, in the order of the description.
    std::vector<std::string> values() const;

  private:
    void addControl(const Setting& setting, const std::string& value, int line);
    void addChoice(const Setting& setting, const std::string& value, int y);
    void addNumber(const Setting& setting, const std::string& value, int y);
    void addSwitch(const std::string& value, int y);
    void addButtons(int y);
    void accept();
    bool takeKey();
    static int dispatch(int event, Fl_Window* window);

    Fl_Double_Window window_;  // owns its widgets
    int controlsAt_ = 0;
    std::vector<std::function<std::string()>> readers_;
    Fl_Button* cancel_ = nullptr;
    Fl_Button* ok_ = nullptr;
    bool accepted_ = false;
};

}  // namespace settings
