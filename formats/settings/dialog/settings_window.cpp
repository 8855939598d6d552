#include "formats/settings/dialog/settings_window.h"

#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Return_Button.H>
#include <FL/Fl_Spinner.H>
#include <FL/fl_draw.H>
#include <FL/x.H>

#include <algorithm>
#include <cmath>

namespace settings {
namespace {

constexpr int kMargin = 14;
constexpr int kLineHeight = 34;
constexpr int kControlHeight = 26;
constexpr int kControlWidth = 150;
constexpr int kButtonWidth = 90;
constexpr int kFontSize = 14;

// The toolkit takes "@" for the start of a symbol.
std::string asLabel(const std::string& text) {
    std::string label;
    for (const char c : text) label += c == '@' ? "@@" : std::string(1, c);
    return label;
}

int labelWidth(const std::vector<Setting>& described) {
    fl_font(FL_HELVETICA, kFontSize);
    double widest = 0;
    for (const Setting& setting : described) {
        widest = std::max(widest, fl_width(setting.label.c_str()));
    }
    return std::max(static_cast<int>(std::ceil(widest)), kButtonWidth);
}

int lineTop(size_t line) { return kMargin + static_cast<int>(line) * kLineHeight; }

int widthFor(const std::vector<Setting>& described) {
    return labelWidth(described) + kControlWidth + 3 * kMargin;
}

// The window in which keys are looked at before the toolkit's own controls see them.
SettingsWindow* shown = nullptr;

}  // namespace

SettingsWindow::SettingsWindow(const std::string& title,
                               const std::vector<Setting>& described,
                               const std::vector<Value>& values)
    : window_(widthFor(described), lineTop(described.size()) + kLineHeight + kMargin),
      controlsAt_(window_.w() - kMargin - kControlWidth) {
    window_.copy_label(title.c_str());
    window_.xclass("vorn");
    for (size_t i = 0; i < described.size(); ++i) {
        const bool valid = values[i].isValid;
        addControl(described[i], valid ? values[i].text : described[i].standard, lineTop(i));
    }
    addButtons(lineTop(described.size()) + kMargin / 2);
    window_.end();
}

void SettingsWindow::addControl(const Setting& setting, const std::string& value, int y) {
    auto* label = new Fl_Box(kMargin, y, controlsAt_ - 2 * kMargin, kControlHeight);
    label->copy_label(asLabel(setting.label).c_str());
    label->align(FL_ALIGN_LEFT | FL_ALIGN_INSIDE);
    switch (setting.kind) {
        case Setting::Kind::kChoice:
            addChoice(setting, value, y);
            break;
        case Setting::Kind::kNumber:
            addNumber(setting, value, y);
            break;
        case Setting::Kind::kSwitch:
            addSwitch(value, y);
            break;
    }
}

void SettingsWindow::addChoice(const Setting& setting, const std::string& value, int y) {
    auto* choice = new Fl_Choice(controlsAt_, y, kControlWidth, kControlHeight);
    const std::vector<std::string> choices = setting.choices;
    for (const std::string& name : choices) {
        // A name that is not taken apart at "/" and "&", as it would be when it was added itself.
        choice->replace(choice->add("choice"), name.c_str());
    }
    const auto place = std::ranges::find(choices, value) - choices.begin();
    choice->value(static_cast<int>(place));
    readers_.push_back([choice, choices] { return choices[static_cast<size_t>(choice->value())]; });
}

void SettingsWindow::addNumber(const Setting& setting, const std::string& value, int y) {
    auto* number = new Fl_Spinner(controlsAt_, y, kControlWidth, kControlHeight);
    number->range(setting.least, setting.most);
    number->step(1);
    number->format("%.0f");
    number->value(std::stod(value));
    readers_.push_back([number] { return std::to_string(std::lround(number->value())); });
}

void SettingsWindow::addSwitch(const std::string& value, int y) {
    auto* button = new Fl_Check_Button(controlsAt_, y, kControlWidth, kControlHeight);
    button->value(value == "true");
    readers_.push_back([button] { return button->value() ? "true" : "false"; });
}

void SettingsWindow::addButtons(int y) {
    const int right = window_.w() - kMargin - kButtonWidth;
    cancel_ =
        new Fl_Button(right - kMargin - kButtonWidth, y, kButtonWidth, kControlHeight, "Cancel");
    ok_ = new Fl_Return_Button(right, y, kButtonWidth, kControlHeight, "OK");
    const auto close = [](Fl_Widget*, void* window) { static_cast<Fl_Window*>(window)->hide(); };
    cancel_->callback(close, static_cast<void*>(&window_));
    window_.callback(close, static_cast<void*>(&window_));
    ok_->callback([](Fl_Widget*, void* self) { static_cast<SettingsWindow*>(self)->accept(); },
                  this);
}

// A number that is still being typed counts when its field is left.
void SettingsWindow::accept() {
    Fl::focus(ok_);
    accepted_ = true;
    window_.hide();
}

// Return is OK wherever the focus is, and the arrows change a number: its text field would keep
// these keys to itself.
bool SettingsWindow::takeKey() {
    const int key = Fl::event_key();
    if (key == FL_Enter || key == FL_KP_Enter) {
        (Fl::focus() == cancel_ ? cancel_ : ok_)->do_callback();
        return true;
    }
    Fl_Widget* field = Fl::focus();
    auto* number = dynamic_cast<Fl_Spinner*>(field != nullptr ? field->parent() : nullptr);
    return number != nullptr && (key == FL_Up || key == FL_Down) && number->handle(FL_KEYDOWN) != 0;
}

// In an open menu the keys are the menu's.
int SettingsWindow::dispatch(int event, Fl_Window* window) {
    const bool isOurs = shown != nullptr && window == &shown->window_ && Fl::grab() == nullptr;
    if (isOurs && event == FL_KEYBOARD && shown->takeKey()) return 1;
    return Fl::handle_(event, window);
}

bool SettingsWindow::run(const DisplayConnection& connection, uintptr_t owner) {
    window_.show();
    if (owner != 0) XSetTransientForHint(fl_display, fl_xid(&window_), owner);
    shown = this;
    const Fl_Event_Dispatch before = Fl::event_dispatch();
    Fl::event_dispatch(&dispatch);
    while (window_.shown() && !connection.isLost()) Fl::wait();
    Fl::event_dispatch(before);
    shown = nullptr;
    return accepted_;
}

std::vector<std::string> SettingsWindow::values() const {
    std::vector<std::string> all;
    for (const auto& read : readers_) all.push_back(read());
    return all;
}

}  // namespace settings
