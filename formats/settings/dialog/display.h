// The connection to the display, for the time of one dialog. The toolkit and the X library would
// end the program where there is no display, or where it goes away; here both become errors.
#pragma once

#include <X11/Xlib.h>

namespace settings {

class DisplayConnection {
  public:
    // Where the host itself uses the toolkit, the connection is the host's and stays as it is.
    // Throws kNoDisplay, kNoFonts.
    DisplayConnection();
    ~DisplayConnection();
    DisplayConnection(const DisplayConnection&) = delete;
    DisplayConnection& operator=(const DisplayConnection&) = delete;

    bool isLost() const { return lost_; }

  private:
    static void noteLoss(Display*, void* connection);

    bool own_ = false;
    bool lost_ = false;
    void (*fatalBefore_)(const char*, ...) = nullptr;
    XErrorHandler errorsBefore_ = nullptr;
    XIOErrorHandler lossesBefore_ = nullptr;
};

}  // namespace settings
