#include "tools/kept_picture.h"

#include <memory>
#include <string>

#include "tools/failure.h"
#include "tools/pixel_layout.h"
#include "tools/tag_words.h"

namespace vorn::tool {

namespace {

using Bytes = std::unique_ptr<uint8_t, void (*)(void*)>;

Bytes allocate(const std::string& file, uint64_t wanted, uint64_t mostMemory) {
    const bool onDisk = wanted > mostMemory;
    const auto size = static_cast<size_t>(wanted);
    if (size != wanted) {  // more than this program can address
        throw numberedFailure(file, kErrorMemory, 0);
    }
    Bytes bytes(static_cast<uint8_t*>(onDisk ? AllocScratch(size) : AllocMemory(size, 0)),
                onDisk ? FreeScratch : FreeMemory);
    if (bytes == nullptr && onDisk) {
        throw numberedFailure(ScratchFolder(), kErrorCannotWrite, BGetErrorCode());
    }
    if (bytes == nullptr) {
        throw numberedFailure(file, kErrorMemory, 0);
    }
    return bytes;
}

void onMeter(VORN_Image*, VORN_Word userData, int32_t count) {
    reinterpret_cast<ProgressBar*>(userData)->tick(count);
}

// Without a bar there is no meter: it would cut the transfer into more and smaller blocks.
TagWords transferTags(const Connection& module, ProgressBar& progress) {
    TagWords words;
    words.addAddress(ITAG_AbortCallback, &Interrupts::onAbort);
    words.add(ITAG_AbortCallbackUserData, module.interrupts().userData());
    if (progress.isShown()) {
        words.addAddress(ITAG_MeterCallback, &onMeter);
        words.addAddress(ITAG_MeterCallbackUserData, &progress);
        words.addLong(ITAG_MeterTicks, ProgressBar::kTicks);
    }
    return words;
}

}  // namespace

void movePicture(Connection& loader,
                 Connection& saver,
                 const ConversionPlan& plan,
                 Size size,
                 uint64_t mostMemory,
                 ProgressBar& progress) {
    const Bytes bytes = allocate(loader.file(), bytesOf(plan, size), mostMemory);
    prefill(bytes.get(), static_cast<size_t>(bytesOf(plan, size)), plan);
    VORN_ImageBuffer buffer{VORN_BUFFER_CHUNKY, pixelsAt(bytes.get(), plan, size)};
    const VORN_ImageBuffer loaded{VORN_BUFFER_CHUNKY, loadedPart(buffer.chunky, plan)};

    progress.beginStage(0, 2);
    // A loader may find damage behind the last line, when all lines have been delivered.
    if (!VORN_H_ImageReadData(loader.image(), &loaded, transferTags(loader, progress).data()) ||
        VORN_ErrorPairCode(VORN_H_ImageGetError(loader.image())) != 0) {
        loader.fail();
    }
    progress.beginStage(1, 2);
    if (!VORN_H_ImageWriteData(saver.image(), &buffer, transferTags(saver, progress).data())) {
        saver.fail();
    }
}

}  // namespace vorn::tool
