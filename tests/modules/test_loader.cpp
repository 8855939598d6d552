// A loader whose pictures are made up from their file names, see wished_picture.h. Further wishes:
// fail=open, begin or read with code=N and subcode=N; failat=LINE for the latter (the height:
// behind the last line); dpi=X and y as "dpix", "dpiy"; text=... for a description; pages=N;
// paints=1 for one that makes RGB of its four inks where the host asks for it.
#include <vorn/host.h>
#include <vorn/module.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

#include "tests/modules/explicit_steps.h"
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
    if (wishes.text("fail") != place) return 0;
    VORN_M_SetErrorCode(wishes.number("code", 2001), wishes.number("subcode", 0));
    return 1;
}

void layOut(Session& s) {
    const WishedPicture& picture = *s.picture;
    VORN_DataFormat& format = s.format;
    format = {picture.layout,
              picture.width,
              picture.height,
              picture.channels,
              picture.bytes,
              picture.alpha ? uint32_t{VORN_DF_ALPHA} : 0,
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

class PaletteBlock {
  public:
    explicit PaletteBlock(const WishedPicture& picture) {
        if (picture.palette == 0) return;
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
        palette_ = VORN_H_CreatePaletteData(&buffer, picture.paletteSpace);
    }
    ~PaletteBlock() { VORN_H_FreePaletteData(palette_); }
    PaletteBlock(const PaletteBlock&) = delete;
    PaletteBlock& operator=(const PaletteBlock&) = delete;
    VORN_Word word() const { return reinterpret_cast<VORN_Word>(palette_); }

  private:
    VORN_Palette* palette_ = nullptr;
};

void announce(const Session& s) {
    const WishedPicture& picture = *s.picture;
    struct {
        uint32_t byteCount = sizeof(VORN_DataFormat);
        VORN_DataFormat format;
    } format;
    format.format = s.format;
    const PaletteBlock palette(picture);
    const std::string text = picture.wishes.text("text");
    std::vector<VORN_Word> tags = {ITAG_DataFormat, reinterpret_cast<VORN_Word>(&format),
                                   ITAG_ColorSpace, static_cast<VORN_Word>(picture.colorSpace),
                                   ITAG_Palette,    palette.word()};
    const auto add = [&tags](uint32_t id, VORN_Word value) {
        tags.insert(tags.end(), {id, value});
    };
    const auto addLong = [&](uint32_t id, int value) { add(id, static_cast<VORN_Word>(value)); };
    if (picture.orientation >= 0) addLong(ITAG_Orientation, picture.orientation);
    if (picture.wishes.number("dpix", 0)) {
        addLong(ITAG_XDPI, picture.wishes.number("dpix", 0));
        addLong(ITAG_YDPI, picture.wishes.number("dpiy", 0));
    }
    if (const int pages = picture.wishes.number("pages", 0)) addLong(ITAG_PageCount, pages);
    if (!text.empty()) add(ITAG_Description, reinterpret_cast<VORN_Word>(text.c_str()));
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
    announce(session());
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
    VORN_M_SetVaCommandReturn(ITAG_PageNumber,
                              static_cast<VORN_Word>(VORN_L_TagGetLongVal(page) + 1), ITAG_PageName,
                              reinterpret_cast<VORN_Word>(text), TAG_End);
}

void closeImage() {}

}  // namespace

int main(int argc, char** argv) {
    VORN_M_SetVaModuleTags(SHTAG_Version, static_cast<VORN_Word>(VORN_PROTOCOL_VERSION),
                           SHTAG_LoaderOpen, reinterpret_cast<VORN_Word>(&openImage),
                           SHTAG_LoaderBegin, reinterpret_cast<VORN_Word>(&beginImage),
                           SHTAG_LoaderRead, reinterpret_cast<VORN_Word>(&readImage), SHTAG_Command,
                           reinterpret_cast<VORN_Word>(&answerCommand), SHTAG_Close,
                           reinterpret_cast<VORN_Word>(&closeImage), SHTAG_End);
    VORN_M_ShellMain(argc, argv);
    return 0;
}
