#include "tools/line_reader.h"

#include <cstring>

#include "tools/failure.h"

namespace vorn::tool {

LineReader::LineReader(Connection& loader, const ConversionPlan& plan) : loader_(loader) {
    takeFormat();
    preparePalette(plan);
    // Asking for a tag makes the library choose the conversion to the colour space that is wanted.
    if (!longTag(loader.image(), ITAG_Width) || !VORN_L_StartReadingImage(loader.image())) {
        loader.fail();
    }
    loader.beginLines();
}

void LineReader::takeFormat() {
    const VORN_TagItem* const item = moduleItem(loader_.image(), ITAG_DataFormat);
    if (item == nullptr || item->length < sizeof *item + sizeof format_) {
        throw numberedFailure(loader_.file(), kErrorNoDataFormat, 0);
    }
    std::memcpy(&format_, item + 1, sizeof format_);
}

void LineReader::preparePalette(const ConversionPlan& plan) {
    if (!plan.lookUp) {
        return;
    }
    palette_.reset(VORN_L_ConvertPalette(moduleItem(loader_.image(), ITAG_Palette),
                                         plan.bytesPerChannel, plan.colorChannels, 0,
                                         plan.colorSpace));
    if (palette_ == nullptr) {
        throw numberedFailure(loader_.file(), kErrorProtocol, 0);
    }
}

void LineReader::read(const VORN_ChunkyBuffer& lines) {
    if (VORN_L_ImageReadLineChunky(loader_.image(), &lines, &format_, &Interrupts::onAbort,
                                   loader_.interrupts().userData(), palette_.get()) == 0) {
        loader_.fail();
    }
}

void LineReader::finish() {
    VORN_L_ImageHandleEndReading(loader_.image());  // the last block may have had more lines
    loader_.endLines();
    if (!VORN_L_WaitForAck(loader_.image()) ||
        VORN_ErrorPairCode(VORN_H_ImageGetError(loader_.image())) != 0) {
        loader_.fail();
    }
}

}  // namespace vorn::tool
