#include "tests/lies/talk.h"

#include <vorn/module.h>

#include <algorithm>
#include <cstring>

#include "tests/lies/truth.h"
#include "tests/pixels/picture.h"

namespace {

using vorn::test::Picture;

constexpr int64_t kMostPixels = 4096;

// Samples of memory that is exactly as large as they are.
Picture hostPicture(int width, int height, int channels, int bytes) {
    return Picture::standard(bytes == 1 ? DF_LineInterleaved8 : DF_LineInterleaved16, width, height,
                             channels, 0);
}

int32_t converted(int32_t sample, int32_t from, int32_t to) {
    return from == to ? sample : from < to ? sample * 257 : sample / 256;
}

void noteProgress(VORN_Image*, VORN_Word, int32_t) {}
int32_t wantsNoMore(VORN_Image*, VORN_Word calls) {
    return --*reinterpret_cast<int32_t*>(calls) == 0;
}

class Talk {
  public:
    Talk(Random& random, ScriptedModule& module, const Stream& stream)
        : random_(random), module_(module), image_(module.image()), stream_(stream) {}

    TalkResult run() {
        // As after the start of a program.
        if (note("the start", VORN_L_WaitForAck(image_)) &&
            image_->moduleVersion == VORN_PROTOCOL_VERSION) {
            for (int round = 0; round < stream_.rounds; ++round) {
                if (open()) stream_.type == VORN_LOADER ? load() : save();
                VORN_H_ImageClose(image_);
            }
        }
        VORN_L_ImageCloseHandle(image_);
        return result_;
    }

  private:
    // Counts a call, and asks a failed one for its reason.
    bool note(const char* call, bool success, bool needsReason = true) {
        if (success) return true;
        ++result_.failures;
        const auto& heard = module_.heard();
        if (needsReason && module_.errorCode() == 0 &&
            std::none_of(heard.begin(), heard.end(), mentionsError)) {
            result_.mistake = std::string(call) + " failed without an error";
        }
        return false;
    }

    bool open() {
        const bool opened =
            note("the open", VORN_H_ImageVaOpen(image_, ITAG_Filename, "file", TAG_End));
        askForEverything();
        if (opened && stream_.hasCommand) {
            VORN_TagItem* answer = VORN_H_ModuleVaSendCommand(image_, CMD_Module, TAG_End);
            note("the command", answer != nullptr);
            if (answer) VORN_L_TagFind(answer, ITAG_Description);
            FreeMemory(answer);
        }
        return opened;
    }

    void askForEverything() {
        for (const uint32_t id : {ITAG_Filename, ITAG_Description, ITAG_Software, ITAG_DataFormat,
                                  ITAG_Palette, MTAG_ModuleList, VORN_ID_BITS_PER_CHANNEL}) {
            void* copy = nullptr;
            VORN_L_ImageVaModuleGetTags(image_, id, VORN_Word(&copy), TAG_End);
            FreeMemory(copy);
        }
        double aspect = 0;
        VORN_H_ImageVaGetTags(image_, ITAG_Aspect, VORN_Word(&aspect), TAG_End);
    }

    int32_t number(uint32_t id) {
        int32_t value = 0;
        VORN_H_ImageVaGetTags(image_, id, VORN_Word(&value), TAG_End);
        return value;
    }

    // The host's wishes, and memory of the size that it was told, or of another one.
    Picture target() {
        for (const uint32_t wish : {ITAG_ColorSpace, ITAG_Orientation}) {
            if (chance(random_, 4))
                VORN_H_ImageVaSetTags(image_, wish, VORN_Word(pick(random_, 0, 7)), TAG_End);
        }
        int32_t width = number(ITAG_Width);
        int32_t height = number(ITAG_Height);
        const bool known = width > 0 && height > 0 && int64_t{width} * height <= kMostPixels;
        if (!known || chance(random_, 4)) {
            width = pick(random_, 1, 20);
            height = pick(random_, 1, 20);
        }
        return hostPicture(width, height, pick(random_, 1, 4), pick(random_, 1, 2));
    }

    void load() {
        const Picture picture = target();
        const VORN_ImageBuffer buffer{VORN_BUFFER_CHUNKY, picture.record};
        const size_t before = module_.heard().size();
        const bool aborts = chance(random_, 8);
        int32_t calls = aborts ? pick(random_, 1, 5) : 0;
        const bool metered = chance(random_, 4);
        const bool read = VORN_H_ImageVaReadData(
            image_, &buffer, ITAG_MeterCallback, VORN_Word(metered ? &noteProgress : nullptr),
            ITAG_AbortCallback, VORN_Word(aborts ? &wantsNoMore : nullptr),
            ITAG_AbortCallbackUserData, VORN_Word(&calls), TAG_End);
        if (note("the read", read)) judge(picture, std::span(module_.heard()).subspan(before));
    }

    void expect(bool right, const char* mistake) {
        if (!right) result_.mistake = mistake;
    }

    // Every sample must be the one that the module's messages hold.
    void judge(const Picture& picture, std::span<const Bytes> heard) {
        ++result_.pictures;
        VORN_DataFormat format;
        void* announced = nullptr;
        VORN_L_ImageVaModuleGetTags(image_, ITAG_DataFormat, VORN_Word(&announced), TAG_End);
        std::memcpy(&format, announced, sizeof format);
        FreeMemory(announced);
        if (image_->colorConversion || image_->orientation || image_->sizeDiffers) return;
        size_t next = 1;  // behind the sign to go on
        SentBlock block;
        int32_t first = 0;
        for (int32_t y = 0; y < picture.record.height; ++y) {
            if (y == first + block.lines) {
                first = y;
                const auto sent = next < heard.size() ? blockIn(heard[next++]) : std::nullopt;
                block = sent.value_or(SentBlock{});
            }
            expect(block.lines > 0, "a picture was read that was not sent");
            if (!result_.mistake.empty()) return;
            judgeLine(picture, block, format, y - first, y);
        }
    }

    void judgeLine(const Picture& picture,
                   const SentBlock& block,
                   const VORN_DataFormat& format,
                   int32_t blockLine,
                   int32_t y) {
        const VORN_ChunkyBuffer& record = picture.record;
        for (int32_t c = 0; c < format.channels; ++c) {
            for (int32_t x = 0; x < record.width; ++x) {
                const auto sample = sampleOf(block, format, c, x, blockLine);
                expect(sample.has_value(), "a sample was read from outside the block");
                expect(!sample || c >= record.channels ||
                           picture.get(c, x, y) ==
                               converted(*sample, format.bytesPerChannel, record.bytesPerChannel),
                       "a sample was not read as it was sent");
            }
        }
    }

    void save() {
        const VORN_DataFormat& format = stream_.format;
        Picture picture =
            hostPicture(format.width, format.height, format.channels, format.bytesPerChannel);
        for (uint8_t& byte : picture.memory) byte = static_cast<uint8_t>(random_());
        VORN_H_ImageVaSetTags(image_, ITAG_Width, VORN_Word(format.width), ITAG_Height,
                              VORN_Word(format.height), ITAG_Channels, VORN_Word(format.channels),
                              ITAG_ImageChannelSize, VORN_Word(format.bytesPerChannel),
                              ITAG_Orientation, VORN_Word(0), TAG_End);
        const VORN_ImageBuffer buffer{VORN_BUFFER_CHUNKY, picture.record};
        const size_t before = module_.taken().size();
        const int32_t ticks = stream_.meterTicks;
        const bool written = VORN_H_ImageVaWriteData(image_, &buffer, ITAG_MeterCallback,
                                                     VORN_Word(ticks ? &noteProgress : nullptr),
                                                     ITAG_MeterTicks, VORN_Word(ticks), TAG_End);
        // A picture of another size has no error number.
        if (!note("the write", written, !image_->sizeDiffers)) return;
        ++result_.pictures;
        if (!image_->orientation) judgeSaved(picture, std::span(module_.taken()).subspan(before));
    }

    // Whatever the script took, in the order in which it came, must be the host's lines.
    void judgeSaved(const Picture& picture, std::span<const Bytes> taken) {
        int32_t y = 0;
        for (const Bytes& area : taken) {
            const auto block = blockIn(area);
            for (int32_t line = 0; block && line < block->lines; ++line, ++y) {
                for (int32_t c = 0; c < picture.record.channels; ++c) {
                    for (int32_t x = 0; x < picture.record.width; ++x)
                        expect(sampleOf(*block, block->format, c, x, line) == picture.get(c, x, y),
                               "a sample was not written as it was");
                }
            }
        }
        expect(y == picture.record.height, "not all lines were written");
    }

    Random& random_;
    ScriptedModule& module_;
    VORN_Image* image_;
    const Stream& stream_;
    TalkResult result_;
};

}  // namespace

TalkResult talk(Random& random, ScriptedModule& module, const Stream& stream) {
    return Talk(random, module, stream).run();
}
