// A loader that doesn't do what a loader should. The name under which it is installed is its order:
// "version-N" (another version of the protocol), "kill-at-begin", "kill-at-block", "no-answer" (to
// the question for the picture's information), "no-format" (in it), or "terminate-zero" (before its
// second block it says that it has not stopped).
//
// Its picture has 4 by 6 samples of one byte, in blocks of two lines; all samples of line y are y.
#include <vorn/library.h>
#include <vorn/module.h>

#include <csignal>
#include <string>

#include "module/module_state.h"
#include "tests/modules/program_name.h"

namespace {

constexpr int32_t kWidth = 4;
constexpr int32_t kHeight = 6;
constexpr int32_t kBlockLines = 2;
constexpr int32_t kBlockBytes = kWidth * kBlockLines;

bool isOrder(const char* name) {
    static const std::string order = programName();
    return order == name;
}

void announce() {
    struct {
        uint32_t byteCount = sizeof(VORN_DataFormat);
        VORN_DataFormat format{DF_LineInterleaved8, kWidth, kHeight, 1, 1, 0, {}, {}, {}, {}};
    } format;
    VORN_M_SetVaImageInfo(ITAG_Width, VORN_Word{kWidth}, ITAG_Height, VORN_Word{kHeight},
                          isOrder("no-format") ? TAG_SkipTag : ITAG_DataFormat,
                          reinterpret_cast<VORN_Word>(&format), ITAG_ColorSpace,
                          VORN_Word{VORN_CS_GRAY}, TAG_End);
}

int32_t openImage(const VORN_TagItem*) { return 1; }

int32_t beginLoading() {
    if (isOrder("kill-at-begin")) std::raise(SIGKILL);
    if (!isOrder("no-answer")) announce();
    return 1;
}

// A block with a tag in front that no function of the library puts there.
void sendWithTerminate(const uint8_t* pixels) {
    SharedStuff* stuff = &vorn::moduleState().stuff;
    void* at = VORN_L_StartWritingSharedStuff(stuff, 0);
    if (!at) return;
    for (const auto& [id, value] :
         {std::pair{MTAG_Terminate, 0}, {ITAG_ReadWidth, kWidth}, {ITAG_ReadHeight, kBlockLines}}) {
        at = VORN_L_writetag(at, id, &value, sizeof value);
    }
    at = VORN_L_writetag(at, ITAG_Data, pixels, kBlockBytes);
    VORN_L_writetag(at, TAG_End, nullptr, 0);
    VORN_L_EndWritingSharedStuff(stuff);
}

void readImage() {
    for (int32_t y = 0; y < kHeight; y += kBlockLines) {
        if (y == kBlockLines && isOrder("kill-at-block")) std::raise(SIGKILL);
        uint8_t pixels[kBlockBytes];
        for (int32_t i = 0; i < kBlockBytes; ++i) pixels[i] = static_cast<uint8_t>(y + i / kWidth);
        if (y == kBlockLines && isOrder("terminate-zero"))
            sendWithTerminate(pixels);
        else if (!VORN_M_SendImageData(kWidth, kBlockLines, y, pixels, kBlockBytes))
            return;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string order = programName();
    const int version = order.starts_with("version-") ? numberInName(order, 0) : 3;
    VORN_M_SetVaModuleTags(SHTAG_Version, static_cast<VORN_Word>(version), SHTAG_LoaderOpen,
                           reinterpret_cast<VORN_Word>(&openImage), SHTAG_LoaderBegin,
                           reinterpret_cast<VORN_Word>(&beginLoading), SHTAG_LoaderRead,
                           reinterpret_cast<VORN_Word>(&readImage), SHTAG_End);
    VORN_M_ShellMain(argc, argv);
    return 0;
}
