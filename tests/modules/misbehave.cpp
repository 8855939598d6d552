// A loader that says what no module may say. The name under which it is installed is its order: one
// of those below, "version-N" for another version of the protocol, or "kill-at-begin" and
// "kill-at-block".
//
// Its picture has 4 by 6 samples of one byte, in blocks of two lines; all samples of line y are y.
#include <vorn/library.h>
#include <vorn/module.h>

#include <csignal>
#include <cstring>
#include <functional>
#include <map>
#include <string>

#include "module/module_state.h"
#include "tests/modules/program_name.h"

namespace {

constexpr int32_t kWidth = 4;
constexpr int32_t kHeight = 6;
constexpr int32_t kBlockLines = 2;
constexpr int32_t kBlockBytes = kWidth * kBlockLines;

const std::string& order() {
    static const std::string name = programName();
    return name;
}

// Messages written byte by byte, as no function of the library would.
class RawMessage {
  public:
    explicit RawMessage(void* area) : at_(static_cast<uint8_t*>(area)) {}
    RawMessage& number(uint32_t id, int32_t value) { return data(id, &value, sizeof value); }
    RawMessage& data(uint32_t id, const void* bytes, uint32_t size) {
        at_ = static_cast<uint8_t*>(VORN_L_writetag(at_, id, bytes, size));
        return *this;
    }
    RawMessage& head(uint32_t id, uint32_t length) {
        const uint32_t words[2] = {id, length};
        std::memcpy(at_, words, sizeof words);
        at_ += sizeof words;
        return *this;
    }
    RawMessage& lines(int32_t height) {
        return number(ITAG_ReadWidth, kWidth).number(ITAG_ReadHeight, height);
    }
    RawMessage& pixels(int32_t first) {
        uint8_t bytes[kBlockBytes];
        for (int32_t i = 0; i < kBlockBytes; ++i)
            bytes[i] = static_cast<uint8_t>(first + i / kWidth);
        return data(ITAG_Data, bytes, sizeof bytes);
    }
    void end() { data(TAG_End, nullptr, 0); }

  private:
    uint8_t* at_;
};

void fill(void* area, uint8_t value) {
    std::memset(area, value, static_cast<size_t>(vorn::moduleState().stuff.writeSize));
}

// Items to the last byte of the area, and no end.
void writeEndless(void* area) {
    fill(area, 0);
    RawMessage message(area);
    for (int32_t i = 0; i < vorn::moduleState().stuff.writeSize / 8; ++i)
        message.head(TAG_SkipTag, 8);
}

using Write = std::function<void(void*)>;

// What is sent instead of a good message: the second block, or with "-info" the image information.
const std::map<std::string, Write>& wrongMessages() {
    static const std::map<std::string, Write> kMessages = {
        {"garbage", [](void* area) { fill(area, 0xEE); }},
        {"zeros", [](void* area) { fill(area, 0); }},
        {"ones", [](void* area) { fill(area, 0xFF); }},
        {"endless", writeEndless},
        {"odd-length", [](void* area) { RawMessage(area).head(ITAG_ReadWidth, 13).end(); }},
        {"short-item", [](void* area) { RawMessage(area).head(ITAG_ReadWidth, 4).end(); }},
        {"long-item", [](void* area) { RawMessage(area).head(ITAG_Data, 0x7FFFFFFC).end(); }},
        {"goto",
         [](void* area) {
             const uint64_t address = 0x41414141;
             RawMessage(area).data(TAG_Goto, &address, sizeof address).end();
         }},
        {"splice", [](void* area) { RawMessage(area).number(TAG_Taglist, 0x41414141).end(); }},
        {"no-lines", [](void* area) { RawMessage(area).lines(0).pixels(2).end(); }},
        {"fewer-than-no-lines", [](void* area) { RawMessage(area).lines(-1).pixels(2).end(); }},
        {"no-data", [](void* area) { RawMessage(area).lines(kBlockLines).end(); }},
        {"empty-data",
         [](void* area) { RawMessage(area).lines(kBlockLines).data(ITAG_Data, nullptr, 0).end(); }},
        {"no-width",
         [](void* area) { RawMessage(area).number(ITAG_ReadHeight, 2).pixels(2).end(); }},
        {"no-height",
         [](void* area) { RawMessage(area).number(ITAG_ReadWidth, 4).pixels(2).end(); }},
        {"one-line-too-many", [](void* area) { RawMessage(area).lines(3).pixels(2).end(); }},
        {"many-lines", [](void* area) { RawMessage(area).lines(0x7FFFFFFF).pixels(2).end(); }},
        {"terminate",
         [](void* area) { RawMessage(area).number(MTAG_Terminate, 1).lines(2).pixels(2).end(); }},
        {"terminate-zero",
         [](void* area) { RawMessage(area).number(MTAG_Terminate, 0).lines(2).pixels(2).end(); }},
        {"error-in-block",
         [](void* area) {
             const int32_t error[2] = {2002, 11};
             RawMessage(area).data(MTAG_ErrorCode, error, sizeof error).lines(2).pixels(2).end();
         }},
        {"short-error",
         [](void* area) { RawMessage(area).data(MTAG_ErrorCode, nullptr, 0).lines(2).end(); }},
        {"acknowledgement",
         [](void* area) { RawMessage(area).number(MTAG_Ack, 9).number(MTAG_Version, 3).end(); }},
    };
    return kMessages;
}

// True when the order was to send something wrong here, and it was sent.
bool sendWrong(const std::string& ending) {
    for (const auto& [name, write] : wrongMessages()) {
        if (order() != name + ending) continue;
        SharedStuff* stuff = &vorn::moduleState().stuff;
        void* area = VORN_L_StartWritingSharedStuff(stuff, 0);
        if (area) write(area);
        if (area) VORN_L_EndWritingSharedStuff(stuff);
        return true;
    }
    return false;
}

// The data format that is announced, by the order.
VORN_DataFormat announcedFormat() {
    VORN_DataFormat format{};
    format.width = kWidth;
    format.height = kHeight;
    format.channels = 1;
    format.bytesPerChannel = 1;
    format.pixelStep[0] = 1;
    format.lineStep[0] = kWidth;
    if (order() == "steps-outside") format.lineStep[0] = 1 << 20;
    if (order() == "steps-before") format.pixelStep[0] = -1;
    if (order() == "place-outside") format.channelPlace[0] = kBlockBytes;
    if (order() == "place-far-outside") format.channelPlace[0] = 0xFFFFFFF0u;
    if (order() == "wide-samples") format.bytesPerChannel = 2;
    if (order() == "nine-channels") format.channels = 9;
    if (order() == "no-width-format") format.width = 0;
    if (order() == "tall-format") format.height = VORN_MAX_SIZE + 1;
    if (order() == "three-byte-format") format.bytesPerChannel = 3;
    if (order() == "huge-layout") format.layout = DF_LineInterleaved16;
    if (order() == "huge-layout") format.width = 0x7FFFFFFF;
    return format;
}

void announce() {
    struct {
        uint32_t byteCount;
        VORN_DataFormat format;
    } format{sizeof(VORN_DataFormat), announcedFormat()};
    if (order() == "short-format") format.byteCount = 64;
    if (order() == "no-format") {
        VORN_M_SetVaImageInfo(ITAG_Width, VORN_Word{kWidth}, ITAG_Height, VORN_Word{kHeight},
                              TAG_End);
        return;
    }
    VORN_M_SetVaImageInfo(ITAG_DataFormat, reinterpret_cast<VORN_Word>(&format), ITAG_ColorSpace,
                          VORN_Word{VORN_CS_GRAY}, TAG_End);
}

int32_t openImage(const VORN_TagItem*) { return 1; }

int32_t beginLoading() {
    if (order() == "kill-at-begin") std::raise(SIGKILL);
    if (order() != "no-answer" && !sendWrong("-info")) announce();
    return 1;
}

void readImage() {
    for (int32_t y = 0; y < kHeight; y += kBlockLines) {
        if (y == kBlockLines && order() == "kill-at-block") std::raise(SIGKILL);
        if (y == kBlockLines && sendWrong("")) {
            if (order() == "terminate-zero") continue;
            return;
        }
        void* place = VORN_M_SendImageDataBegin(kWidth, kBlockLines, y, nullptr, kBlockBytes);
        if (!place) return;
        for (int32_t i = 0; i < kBlockBytes; ++i)
            static_cast<uint8_t*>(place)[i] = static_cast<uint8_t>(y + i / kWidth);
        VORN_M_SendImageDataEnd();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const VORN_Word version = order().rfind("version-", 0) == 0
                                  ? static_cast<VORN_Word>(numberInName(order(), 0))
                                  : VORN_Word{VORN_PROTOCOL_VERSION};
    VORN_M_SetVaModuleTags(SHTAG_Version, version, SHTAG_LoaderOpen,
                           reinterpret_cast<VORN_Word>(&openImage), SHTAG_LoaderBegin,
                           reinterpret_cast<VORN_Word>(&beginLoading), SHTAG_LoaderRead,
                           reinterpret_cast<VORN_Word>(&readImage), SHTAG_End);
    VORN_M_ShellMain(argc, argv);
    return 0;
}
