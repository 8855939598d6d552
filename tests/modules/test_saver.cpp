// A saver that writes what it received, see saved_picture.h. Installed as "saver-5" it announces
// orientation 5, as "mute" it announces nothing. ITAG_DocumentName holds wishes: form=, sb= (bytes
// per channel) and lines= of its own buffer; fail=open, begin or write with code= and failat=LINE;
// stop=LINE to take no more without an error.
#include <vorn/library.h>
#include <vorn/module.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "pixels/data_format.h"
#include "tags/tag_walk.h"
#include "tests/modules/explicit_steps.h"
#include "tests/modules/program_name.h"
#include "tests/modules/saved_picture.h"
#include "tests/modules/wished_picture.h"

namespace {

constexpr uint8_t kBlank = 0xEE;

struct Session {
    Wishes wishes{""};
    std::string path;
    SavedHead head;
    std::vector<uint8_t> told;
    std::vector<uint8_t> samples;
};

Session& session() {
    static Session theOne;
    return theOne;
}

int32_t fails(const char* place) {
    const Wishes& wishes = session().wishes;
    if (wishes.text("fail") != place) return 0;
    VORN_M_SetErrorCode(wishes.number("code", 2001), wishes.number("subcode", 0));
    return 1;
}

int32_t number(const VORN_TagItem* message, uint32_t id, int32_t otherwise) {
    const VORN_TagItem* item = VORN_L_TagFind(message, id);
    return item ? VORN_L_TagGetLongVal(item) : otherwise;
}

std::string text(const VORN_TagItem* message, uint32_t id) {
    char value[4096];
    return VORN_L_CopyTagStringOrNull(message, id, value, sizeof value) ? value : "";
}

void answerQuery() {
    const std::string name = programName();
    if (name == "mute") return;
    VORN_M_SetVaImageInfo(ITAG_Orientation, static_cast<VORN_Word>(numberInName(name, 0)), TAG_End);
}

int32_t openImage(const VORN_TagItem* message) {
    Session& s = session();
    s = Session{};
    s.wishes = Wishes(text(message, ITAG_DocumentName));
    s.path = text(message, ITAG_Filename);
    s.head.width = number(message, ITAG_Width, 0);
    s.head.height = number(message, ITAG_Height, 0);
    s.head.channels = number(message, ITAG_Channels, 3);
    s.head.bytesPerChannel = s.wishes.number("sb", number(message, ITAG_ImageChannelSize, 1));
    s.told.resize(VORN_L_TagListSize(message, nullptr) + vorn::kEndItemSize);
    VORN_L_TagCopyList(message, s.told.data(), 0);
    return !fails("open");
}

int32_t beginImage() { return !fails("begin"); }

// The saver's own buffer, in the form that was wished for.
struct OwnBuffer {
    OwnBuffer(const Session& s, int32_t lines) {
        VORN_DataFormat format{
            0, s.head.width, lines, s.head.channels, s.head.bytesPerChannel, 0, {}, {}, {}, {}};
        const int32_t size = setExplicitSteps(format, s.wishes.text("form", "cells"), lines);
        bytes.assign(static_cast<size_t>(size), kBlank);
        record = vorn::bufferAt(format, bytes.data());
    }

    void keep(int32_t lines, std::vector<uint8_t>& samples) const {
        for (int32_t y = 0; y < lines; ++y) {
            for (int32_t x = 0; x < record.width; ++x) {
                for (int32_t c = 0; c < record.channels; ++c) {
                    const uint8_t* at = record.channelPlace[c] + ptrdiff_t{y} * record.lineStep[c] +
                                        ptrdiff_t{x} * record.pixelStep[c];
                    samples.insert(samples.end(), at, at + record.bytesPerChannel);
                }
            }
        }
    }

    std::vector<uint8_t> bytes;
    VORN_ChunkyBuffer record{};
};

bool writeFile(const Session& s) {
    VORN_File* file = BOpenFile(s.path.c_str(), BFILE_Write);
    if (!file) {
        VORN_M_SetErrorCode(20, BGetErrorCode());
        return false;
    }
    const auto write = [file](const void* bytes, size_t size) {
        const auto count = static_cast<int32_t>(size);
        return count == 0 || VORN_M_BWrite(file, bytes, count) == count;
    };
    SavedHead head = s.head;
    head.tagBytes = static_cast<int32_t>(s.told.size());
    const bool written = write(&head, sizeof head) && write(s.told.data(), s.told.size()) &&
                         write(s.samples.data(), s.samples.size()) && BCommit(file);
    BClose(file);
    return written;
}

// True when all lines have come.
bool takeLines(Session& s) {
    VORN_ImageDataState* state = VORN_M_CreateGetImageDataState();
    const int32_t failAt = s.wishes.number("failat", 0);
    const int32_t stopAt = s.wishes.number("stop", s.head.height);
    const int32_t most = s.wishes.number("lines", 7);
    int32_t done = 0;
    bool good = state != nullptr;
    while (good && done < stopAt && !(done >= failAt && fails("write"))) {
        const OwnBuffer buffer(s, std::min(most, stopAt - done));
        const int32_t got = VORN_M_GetImageData(&buffer.record, state);
        buffer.keep(got, s.samples);
        done += got;
        good = got == buffer.record.height;
    }
    const bool complete = done == s.head.height;
    // After an error the host's lines are left where they are: it shall hear of the error first.
    if (s.wishes.text("fail") == "write")
        FreeMemory(state);
    else
        VORN_M_DestroyImageDataState(state);
    return complete;
}

int32_t writeImage() {
    Session& s = session();
    const bool complete = takeLines(s);
    if (s.wishes.text("fail") == "write") return 0;
    return !complete || writeFile(s);
}

}  // namespace

int main(int argc, char** argv) {
    VORN_M_SetVaModuleTags(SHTAG_Version, VORN_Word(VORN_PROTOCOL_VERSION), SHTAG_SaverQuery,
                           VORN_Word(&answerQuery), SHTAG_SaverOpen, VORN_Word(&openImage),
                           SHTAG_SaverBegin, VORN_Word(&beginImage), SHTAG_SaverWrite,
                           VORN_Word(&writeImage), SHTAG_End);
    VORN_M_ShellMain(argc, argv);
    return 0;
}
