#include "formats/common/saver.h"

#include <vorn/module.h>

#include <vector>

#include "formats/common/layout.h"
#include "formats/common/short_memory.h"

namespace formats {
namespace {

// The callbacks get no context, and a module program serves one image at a time.
struct Session {
    SaverFactory make = nullptr;
    Turning turning = Turning::kByHost;
    OutputFile file;
    std::unique_ptr<Saver> saver;  // ends before its file
    int32_t width = 0;
    int32_t height = 0;
    LineLayout layout;
    VORN_ImageDataState* lines = nullptr;
};

Session& session() {
    static Session theOne;
    return theOne;
}

// A saver has to answer something. Orientation 0 makes the host turn the picture upright; a
// negative one leaves it as it is.
void answerQuery() {
    const int32_t orientation = session().turning == Turning::kByHost ? 0 : -1;
    VORN_M_SetVaImageInfo(ITAG_Orientation, static_cast<VORN_Word>(orientation), TAG_End);
}

// The host learns of a failure at once when the second step of opening reports it, but only at the
// end of all data when the first does: so the first step does the work and the second reports.
int32_t openImage(const VORN_TagItem* message) {
    const bool opened = guarded([message] {
        Session& s = session();
        ImageToSave image = imageToSave(message);
        s.width = image.width;
        s.height = image.height;
        s.file = OutputFile(image.fileName);
        s.saver = s.make();
        s.layout = s.saver->open(image, s.file);
    });
    if (!opened) session().saver.reset();
    return 1;
}

int32_t beginImage() { return session().saver != nullptr; }

// False: the host has stopped before the last line. It knows why.
bool receiveLines(Session& s) {
    const auto lineBytes = static_cast<size_t>(s.width) *
                           static_cast<size_t>(s.layout.channels * s.layout.bytesPerChannel);
    std::vector<uint8_t> line(lineBytes);
    const VORN_ChunkyBuffer buffer =
        interleavedBuffer(line.data(), s.width, 1, s.layout.channels, s.layout.bytesPerChannel);
    for (int32_t y = 0; y < s.height; ++y) {
        if (VORN_M_GetImageData(&buffer, s.lines) != 1) return false;
        s.saver->writeLine(line.data());
    }
    return true;
}

// The file is committed only here, when all lines have come: after an abort, an error or the host's
// end, the target is as it was. After an error the reading position stays for closeImage, because
// destroying it now would take all data that the host still has, before the host hears of the
// error.
int32_t writeImage() {
    bool complete = false;
    guarded([&complete] {
        Session& s = session();
        s.lines = VORN_M_CreateGetImageDataState();
        if (!s.lines) throw kAlreadyNoted;
        if (!receiveLines(s)) return;
        s.saver->finish();
        s.file.commit();
        complete = true;
        VORN_M_DestroyImageDataState(s.lines);
        s.lines = nullptr;
    });
    return complete;
}

void closeImage() {
    Session& s = session();
    VORN_M_DestroyImageDataState(s.lines);
    s.lines = nullptr;
    s.saver.reset();
    s.file = OutputFile();
}

}  // namespace

int runSaver(int argc, char** argv, SaverFactory make, Turning turning) {
    tellShortMemory();
    session().make = make;
    session().turning = turning;
    VORN_M_SetVaModuleTags(SHTAG_Version, static_cast<VORN_Word>(VORN_PROTOCOL_VERSION),
                           SHTAG_SaverQuery, reinterpret_cast<VORN_Word>(&answerQuery),
                           SHTAG_SaverOpen, reinterpret_cast<VORN_Word>(&openImage),
                           SHTAG_SaverBegin, reinterpret_cast<VORN_Word>(&beginImage),
                           SHTAG_SaverWrite, reinterpret_cast<VORN_Word>(&writeImage), SHTAG_Close,
                           reinterpret_cast<VORN_Word>(&closeImage), SHTAG_End);
    VORN_M_ShellMain(argc, argv);
    return 0;
}

}  // namespace formats
