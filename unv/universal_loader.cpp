#include <vorn/host.h>
#include <vorn/library.h>
#include <vorn/unv.h>

#include <array>
#include <cstring>
#include <memory>
#include <span>

#include "unv/file_ending.h"
#include "unv/signature.h"

namespace vorn {
namespace {

constexpr int32_t kHeadBytes = 4096;

struct Head {
    std::array<uint8_t, kHeadBytes> bytes;
    size_t count = 0;
};

bool readHead(const char* fileName, Head& head) {
    VORN_File* file = BOpenFile(fileName, BFILE_Read);
    if (!file) return false;
    head.count = static_cast<size_t>(BRead(file, head.bytes.data(), kHeadBytes));
    const bool read = BGetErrorCode() == 0;
    BClose(file);
    return read;
}

// What a loader's capability file says about its files.
struct Announcement {
    char signatures[PARSE_STRING_SIZE];
    char endings[PARSE_STRING_SIZE];
    char ending[PARSE_STRING_SIZE];
};

void readAnnouncement(const char* loader, Announcement& said) {
    const VORN_ParseEntry table[] = {{"Signatures", PARSE_String, said.signatures, 0},
                                     {"Extensions", PARSE_String, said.endings, 0},
                                     {"Extension", PARSE_String, said.ending, 0},
                                     {nullptr, 0, nullptr, 0}};
    const std::unique_ptr<char, void (*)(void*)> text(VORN_L_GetCapString(loader, VORN_LOADER),
                                                      FreeMemory);
    VORN_u_ParseGUIResults(text.get(), table);
}

// How well a loader suits a file. A matching signature outweighs the ending, and a loader whose
// signatures don't match doesn't know the file, whatever that is called.
uint32_t suitability(const char* loader, const char* fileName, const Head& head) {
    Announcement said;
    readAnnouncement(loader, said);
    const uint32_t bits = bitsPinnedDown(said.signatures, std::span(head.bytes).first(head.count));
    if (*said.signatures && bits == 0) return 0;
    const bool ending = hasEnding(fileName, said.endings) || hasEnding(fileName, said.ending);
    return 2 * bits + (ending ? 1 : 0);
}

// The first of the best, or null.
const char* bestLoader(char* const* loaders, const char* fileName, const Head& head) {
    const char* best = nullptr;
    uint32_t most = 0;
    for (; *loaders; ++loaders) {
        const uint32_t suits = suitability(*loaders, fileName, head);
        if (suits > most) best = *loaders;
        if (suits > most) most = suits;
    }
    return best;
}

}  // namespace
}  // namespace vorn

extern "C" VORN_Bool VORN_M_UniversalLoader(const char* fileName, char* answer, int32_t options) {
    if (!answer) return 0;
    *answer = '\0';
    vorn::Head head;
    if (!fileName || options != 0 || !vorn::readHead(fileName, head)) return 0;
    char** list = nullptr;
    VORN_H_ImageVaQueryModuleHandler(VORN_LOADER, MTAG_ModuleList, &list, TAG_End);
    if (!list) return 0;
    const char* best = vorn::bestLoader(list, fileName, head);
    const bool fits = best && std::strlen(best) < VORN_UNIVERSAL_ANSWER_SIZE;
    if (fits) std::strcpy(answer, best);
    VORN_H_FreeStringList(list);
    return fits;
}
