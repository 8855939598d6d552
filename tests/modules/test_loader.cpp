// A loader whose pictures are made up from their file names, see wished_picture.h. Further wishes:
// fail=open, begin or read with code=N and subcode=N; kill=begin or read for one that dies there;
// failat=LINE for where reading goes wrong (the height: behind the last line); dpi=X and y as
// "dpix", "dpiy"; text=... for a description; pages=N; paints=1 for one that makes RGB of its four
// inks where the host asks for it; silent=1 for no information at all, formless=1 for none about
// the pixels; goeson=1 for blocks (with inplace=1) that say that it has not stopped. Installed as
// "version-2" it speaks that version of the protocol.
#include <vorn/host.h>
#include <vorn/module.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "tests/modules/explicit_steps.h"
#include "tests/modules/program_name.h"
#include "tests/modules/wished_picture.h"

namespace {

struct Session {
    std::optional<WishedPicture> picture;
    VORN_DataFormat format{};
    int32_t blockLines = 0;
    int32_t blockBytes = 0;
    bool wholeBlocks = false;  // the steps fit only a block of all its lines
};

Session& session() {
    static Session theOne;
    return theOne;
}

int32_t fails(const char* place) {
    const Wishes& wishes = session().picture->wishes;
    if (wishes.text("kill") == place) std::raise(SIGKILL);
    if (wishes.text("fail") != place) return 0;
    VORN_M_SetErrorCode(wishes.number("code", 2001), wishes.number("subcode", 0));
    return 1;
}

void layOut(Session& s) {
    const WishedPicture& picture = *s.picture;
    VORN_DataFormat& format = s.format;
    const uint32_t flags = picture.alpha ? VORN_DF_ALPHA : 0;
    format = {picture.layout,
              picture.width,
              picture.height,
              picture.channels,
              picture.bytes,
              flags,
              {},
              {},
              {},
              {}};
    VORN_L_DataFormatMacroSetup(&format);
    const bool steps = picture.layout == DF_Explicit;
    const int32_t lineBytes =
        steps ? setExplicitSteps(format, picture.form, 1) : format.lineStep[0];
    const int32_t fitting = VORN_M_SendImageDataMaxSize() / std::max(lineBytes, 1);
    s.blockLines = picture.blockLines ? picture.blockLines : std::clamp(fitting, 1, 16);
    s.blockLines = std::min(s.blockLines, picture.height);
    s.blockBytes = s.blockLines * lineBytes;
    if (steps) s.blockBytes = setExplicitSteps(format, picture.form, s.blockLines);
    s.wholeBlocks = steps && picture.form != "cells";
}

using OwnedPalette = std::unique_ptr<VORN_Palette, decltype(&VORN_H_FreePaletteData)>;

OwnedPalette paletteOf(const WishedPicture& picture) {
    if (picture.palette == 0) return {nullptr, &VORN_H_FreePaletteData};
    const int32_t layout = picture.paletteBytes == 2 ? DF_Chunky3x16 : DF_Chunky3x8;
    VORN_ChunkyBuffer buffer{layout, picture.palette, 1, 3, 0, 0, {}, {}, {}, {}};
    std::vector<uint8_t> bytes(static_cast<size_t>(picture.palette * 3 * picture.paletteBytes));
    buffer.channelPlace[0] = bytes.data();
    VORN_L_ChunkyBufferMacroSetup(&buffer);
    for (int i = 0; i < 3 * picture.palette; ++i) {
        const int value = picture.entry(i % 3, i / 3);
        std::memcpy(buffer.channelPlace[i % 3] + i / 3 * buffer.pixelStep[0], &value,
                    static_cast<size_t>(picture.paletteBytes));
    }
    return {VORN_H_CreatePaletteData(&buffer, picture.paletteSpace), &VORN_H_FreePaletteData};
}

void announce(const Session& s) {
    const WishedPicture& picture = *s.picture;
    const Wishes& wishes = picture.wishes;
    struct {
        uint32_t byteCount = sizeof(VORN_DataFormat);
        VORN_DataFormat format;
    } format;
    format.format = s.format;
    const OwnedPalette palette = paletteOf(picture);
    const std::string text = wishes.text("text");
    std::vector<VORN_Word> tags;
    const auto add = [&tags](bool wanted, uint32_t id, auto value) {
        if (wanted) tags.insert(tags.end(), {id, VORN_Word(value)});
    };
    const bool formless = wishes.number("formless", 0);
    add(!formless, ITAG_DataFormat, &format);
    add(formless, ITAG_Width, picture.width);
    add(formless, ITAG_Height, picture.height);
    add(true, ITAG_ColorSpace, picture.colorSpace);
    add(palette != nullptr, ITAG_Palette, palette.get());
    add(picture.orientation >= 0, ITAG_Orientation, picture.orientation);
    for (const auto& [wish, id] :
         {std::pair{"dpix", ITAG_XDPI}, {"dpiy", ITAG_YDPI}, {"pages", ITAG_PageCount}})
        add(wishes.number(wish, 0), id, wishes.number(wish, 0));
    add(!text.empty(), ITAG_Description, text.c_str());
    tags.push_back(TAG_End);
    VORN_M_SetImageInfoTags(static_cast<uint32_t>(tags[0]), tags.data() + 1);
}

int32_t openImage(const VORN_TagItem* message) {
    char name[4096];
    if (!VORN_L_CopyTagStringOrNull(message, ITAG_Filename, name, sizeof name)) return 0;
    WishedPicture& picture = session().picture.emplace(name);
    if (picture.wishes.number("paints", 0) && VORN_L_TagFind(message, ITAG_ColorSpace)) {
        picture.colorSpace = VORN_CS_RGB;
        picture.channels = 3;
    }
    if (fails("open")) return 0;
    layOut(session());
    return 1;
}

int32_t beginImage() {
    if (fails("begin")) return 0;
    if (!session().picture->wishes.number("silent", 0)) announce(session());
    return 1;
}

void fillLine(const Session& s, uint8_t* block, int32_t line, int32_t y) {
    const VORN_DataFormat& format = s.format;
    for (int32_t c = 0; c < format.channels; ++c) {
        uint8_t* place = block + format.channelPlace[c] + ptrdiff_t{line} * format.lineStep[c];
        for (int32_t x = 0; x < format.width; ++x, place += format.pixelStep[c]) {
            const int value = s.picture->sample(c, x, y);
            place[0] = static_cast<uint8_t>(value);
            if (format.bytesPerChannel == 2) place[1] = static_cast<uint8_t>(value >> 8);
        }
    }
}

// A buffer of the module's own, or none when the lines go straight into the shared area.
bool makeBuffer(const Session& s, void*& buffer) {
    int32_t lines = 0;
    buffer = nullptr;
    if (s.picture->inPlace) return true;
    return VORN_M_AllocateLoadBuffer(s.blockBytes, 1, &buffer, &lines);
}

// What the library had against a block, if anything, is the host's business.
bool passOnError() {
    const VORN_ErrorPair error = VORN_H_ImageGetError(nullptr);
    if (VORN_ErrorPairCode(error) != 0)
        VORN_M_SetErrorCode(VORN_ErrorPairCode(error), VORN_ErrorPairSubcode(error));
    return false;
}

bool sendBlock(const Session& s, void* buffer, int32_t first, int32_t lines) {
    const int32_t width = s.format.width;
    const int32_t size = s.wholeBlocks ? s.blockBytes : s.blockBytes / s.blockLines * lines;
    void* place = buffer ? buffer : VORN_M_SendImageDataBegin(width, lines, first, nullptr, size);
    if (!place) return passOnError();
    if (s.picture->wishes.number("goeson", 0)) {  // instead of the first line's number
        const uint32_t item[] = {MTAG_Terminate, 12, 0};
        std::memcpy(static_cast<uint8_t*>(place) - 8 - sizeof item, item, sizeof item);
    }
    std::memset(place, 0xEE, static_cast<size_t>(size));
    for (int32_t i = 0; i < lines; ++i) fillLine(s, static_cast<uint8_t*>(place), i, first + i);
    return buffer ? VORN_M_SendImageData(width, lines, first, buffer, size)
                  : VORN_M_SendImageDataEnd();
}

void readImage() {
    const Session& s = session();
    void* buffer = nullptr;
    if (!makeBuffer(s, buffer)) return;
    const int32_t failAt = s.picture->wishes.number("failat", 0);
    for (int32_t y = 0; y < s.picture->height; y += s.blockLines) {
        if (y >= failAt && fails("read")) break;
        if (!sendBlock(s, buffer, y, std::min(s.blockLines, s.picture->height - y))) break;
    }
    if (failAt == s.picture->height) fails("read");
    VORN_M_FreeLoadBuffer(buffer);
}

// Answers with the page number plus one and the text that it was asked with.
void answerCommand(const VORN_TagItem* message) {
    const VORN_TagItem* page = VORN_L_TagFind(message, ITAG_PageNumber);
    if (!page) return;
    char text[256];
    VORN_L_CopyTagStringOrNull(message, ITAG_PageName, text, sizeof text);
    VORN_M_SetVaCommandReturn(ITAG_PageNumber, VORN_Word(VORN_L_TagGetLongVal(page) + 1),
                              ITAG_PageName, VORN_Word(text), TAG_End);
}

void closeImage() {}

}  // namespace

int main(int argc, char** argv) {
    const int version = numberInName(programName(), VORN_PROTOCOL_VERSION);
    VORN_M_SetVaModuleTags(
        SHTAG_Version, VORN_Word(version), SHTAG_LoaderOpen, VORN_Word(&openImage),
        SHTAG_LoaderBegin, VORN_Word(&beginImage), SHTAG_LoaderRead, VORN_Word(&readImage),
        SHTAG_Command, VORN_Word(&answerCommand), SHTAG_Close, VORN_Word(&closeImage), SHTAG_End);
    VORN_M_ShellMain(argc, argv);
    return 0;
}
