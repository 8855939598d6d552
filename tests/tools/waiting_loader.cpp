// A loader for tests. It sends the first half of a picture, tells the test by opening the named
// pipe WAITING_LOADER_PIPE, and then does what WAITING_LOADER_THEN says: "send" the rest of a very
// high picture, or "hang", or "spin", or "allocate" without end. The pipe stays open as long as the
// program lives. When it has been told to stop sending, it says so with the file
// WAITING_LOADER_TOLD.
#include <fcntl.h>
#include <unistd.h>
#include <vorn/vorn.h>

#include <cstdlib>
#include <new>
#include <string_view>

#include "formats/common/description.h"

namespace {

constexpr int32_t kWidth = 100;
constexpr int32_t kHeight = 65536;

int32_t openImage(const VORN_TagItem*) {
    formats::Description image;
    image.width = kWidth;
    image.height = kHeight;
    image.channels = 1;
    image.colorSpace = VORN_CS_GRAY;
    formats::announce(image);
    return 1;
}

int32_t beginImage() { return 1; }

void readImage() {
    static const uint8_t line[kWidth] = {};
    for (int32_t y = 0; y < kHeight; ++y) {
        if (y == 100) {
            ::open(std::getenv("WAITING_LOADER_PIPE"), O_WRONLY);
            const std::string_view then = std::getenv("WAITING_LOADER_THEN");
            while (then == "hang") ::pause();
            for (volatile bool on = then == "spin"; on;) {
            }
            while (then == "allocate") {
                char* volatile kept = new (std::nothrow) char[1 << 22];
                if (!kept) {
                    VORN_M_MemoryIsShort();
                    std::abort();
                }
                *kept = 1;
            }
        }
        if (!VORN_M_SendImageData(kWidth, 1, y, line, kWidth)) {
            ::close(::open(std::getenv("WAITING_LOADER_TOLD"), O_WRONLY | O_CREAT, 0600));
            return;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    ::alarm(120);  // nothing stays behind, whatever becomes of the test
    VORN_M_SetVaModuleTags(SHTAG_Version, VORN_Word{VORN_PROTOCOL_VERSION}, SHTAG_LoaderOpen,
                           reinterpret_cast<VORN_Word>(&openImage), SHTAG_LoaderBegin,
                           reinterpret_cast<VORN_Word>(&beginImage), SHTAG_LoaderRead,
                           reinterpret_cast<VORN_Word>(&readImage), SHTAG_End);
    VORN_M_ShellMain(argc, argv);
    return 0;
}
