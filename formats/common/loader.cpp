#include "formats/common/loader.h"

#include <vorn/library.h>
#include <vorn/module.h>

#include <algorithm>

#include "formats/common/short_memory.h"

namespace formats {
namespace {

constexpr int32_t kMostLines = 16;

// The callbacks get no context, and a module program serves one image at a time.
struct Session {
    LoaderFactory make = nullptr;
    std::unique_ptr<Loader> loader;
    Description description;
};

Session& session() {
    static Session theOne;
    return theOne;
}

class LineBuffer {
  public:
    LineBuffer(int32_t lineBytes, int32_t lines) {
        if (!VORN_M_AllocateLoadBuffer(lineBytes, std::min(lines, kMostLines), &bytes_, &lines_))
            throw kAlreadyNoted;
    }
    ~LineBuffer() { VORN_M_FreeLoadBuffer(bytes_); }
    LineBuffer(const LineBuffer&) = delete;
    LineBuffer& operator=(const LineBuffer&) = delete;

    uint8_t* bytes() const { return static_cast<uint8_t*>(bytes_); }
    int32_t lines() const { return lines_; }

  private:
    void* bytes_ = nullptr;
    int32_t lines_ = 0;
};

// The lines are decoded into a buffer of the loader's own, not into the shared area: so the next
// lines are decoded while the host still converts the block before.
void sendLines(Loader& loader, const Description& description) {
    const int32_t lineBytes = description.lineBytes();
    const LineBuffer buffer(lineBytes, description.height);
    for (int32_t first = 0; first < description.height;) {
        const int32_t lines = std::min(buffer.lines(), description.height - first);
        for (int32_t i = 0; i < lines; ++i) loader.readLine(buffer.bytes() + i * lineBytes);
        const int32_t size = lines * lineBytes;
        if (!VORN_M_SendImageData(description.width, lines, first, buffer.bytes(), size))
            return;  // the host has stopped the transfer
        first += lines;
    }
}

int32_t numberIn(const VORN_TagItem* message, uint32_t id, int32_t otherwise) {
    const VORN_TagItem* item = VORN_L_TagFind(message, id);
    return item ? VORN_L_TagGetLongVal(item) : otherwise;
}

Wishes wishesIn(const VORN_TagItem* message) {
    Wishes wishes;
    wishes.page = numberIn(message, ITAG_PageNumber, 1);
    wishes.width = numberIn(message, ITAG_WantedWidth, 0);
    wishes.height = numberIn(message, ITAG_WantedHeight, 0);
    wishes.colorSpace = numberIn(message, ITAG_ColorSpace, -1);
    return wishes;
}

// The description is sent last: once the host has it, the image counts as open.
int32_t openImage(const VORN_TagItem* message) {
    return guarded([message] {
        Session& s = session();
        s.loader = s.make();
        s.loader->setWishes(wishesIn(message));
        s.description = s.loader->open(InputFile(fileName(message)));
        announce(s.description);
    });
}

int32_t beginImage() { return 1; }

void readImage() {
    guarded([] { sendLines(*session().loader, session().description); });
}

void closeImage() {
    session().loader.reset();
    session().description = Description{};
}

}  // namespace

int runLoader(int argc, char** argv, LoaderFactory make) {
    tellShortMemory();
    session().make = make;
    VORN_M_SetVaModuleTags(SHTAG_Version, static_cast<VORN_Word>(VORN_PROTOCOL_VERSION),
                           SHTAG_LoaderOpen, reinterpret_cast<VORN_Word>(&openImage),
                           SHTAG_LoaderBegin, reinterpret_cast<VORN_Word>(&beginImage),
                           SHTAG_LoaderRead, reinterpret_cast<VORN_Word>(&readImage), SHTAG_Close,
                           reinterpret_cast<VORN_Word>(&closeImage), SHTAG_End);
    VORN_M_ShellMain(argc, argv);
    return 0;
}

}  // namespace formats
