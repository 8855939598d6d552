#include "formats/settings/dialog/display.h"

#include <FL/Fl.H>
#include <FL/x.H>
#include <X11/Xft/Xft.h>
#include <vorn/support.h>

#include "formats/common/failure.h"

namespace settings {
namespace {

// What the X library calls instead of ending the program. A request that the display refuses is no
// reason to give up: at worst something is not drawn.
int ignoreError(Display*, XErrorEvent* error) {
    dblog("settings dialog: X error %d, request %d\n", error->error_code, error->request_code);
    return 0;
}

int ignoreLoss(Display*) { return 0; }

// Without any font the toolkit would end the program with nothing in between to take.
bool hasFonts(Display* display) {
    XftFont* font = XftFontOpenName(display, DefaultScreen(display), "sans");
    if (font != nullptr) XftFontClose(display, font);
    return font != nullptr;
}

// The toolkit must not go on behind this call, and the program must not end.
void giveUp(const char*, ...) { throw formats::Failure{formats::kNoDisplay}; }

}  // namespace

DisplayConnection::DisplayConnection() {
    if (fl_display != nullptr) return;
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) throw formats::Failure{formats::kNoDisplay};
    if (!hasFonts(display)) {
        XCloseDisplay(display);
        throw formats::Failure{formats::kNoFonts};
    }
    own_ = true;
    XSetIOErrorExitHandler(display, &noteLoss, this);
    lossesBefore_ = XSetIOErrorHandler(&ignoreLoss);
    errorsBefore_ = XSetErrorHandler(&ignoreError);
    fatalBefore_ = Fl::fatal;
    Fl::fatal = &giveUp;
    fl_open_display(display);
}

DisplayConnection::~DisplayConnection() {
    if (!own_) return;
    fl_close_display();
    Fl::fatal = fatalBefore_;
    XSetErrorHandler(errorsBefore_);
    XSetIOErrorHandler(lossesBefore_);
}

void DisplayConnection::noteLoss(Display*, void* connection) {
    static_cast<DisplayConnection*>(connection)->lost_ = true;
}

}  // namespace settings
