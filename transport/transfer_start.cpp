// The commands that begin a transfer of pixels.
#include <cstring>

#include "errors/error_numbers.h"
#include "pixels/block_channels.h"
#include "pixels/data_format.h"
#include "tags/tag_walk.h"
#include "transport/aspect.h"
#include "transport/image.h"
#include "transport/message.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

// Judges the module's first answer: nothing in it is the sign to go on.
bool firstAnswer(VORN_Image* image) {
    Message message;
    if (!receiveMessage(*image, message)) return false;
    const bool error = VORN_L_HandleErrorCode(image, message.list);
    const bool acknowledged = VORN_L_HandleAckMsg(image, message.list);
    VORN_L_ImageHandleEndReading(image);
    if (acknowledged && !error) VORN_L_SetErrorCode(image, kErrorProtocol, 0);
    return !error && !acknowledged;
}

// What a saver is told beyond (and before) the handle's own tags, in the terms of the blocks that
// it will get.
struct SaverNews {
    bool layout = false;  // channels and colour space differ from the handle's
    int32_t channels = 0;
    int32_t colorSpace = 0;
    DerivedAspect aspect;

    uint32_t size() const {
        return (layout ? 2 * kLongItemSize : 0) + (aspect.hasParts ? 2 * kLongItemSize : 0) +
               (aspect.hasRatio ? kDoubleItemSize : 0);
    }
};

SaverNews newsFor(const VORN_Image& image) {
    SaverNews news;
    news.aspect = deriveAspect(image.imageTags);
    if (image.axesSwapped) {  // the parts exchange their ids on the way, and the number must agree
                              // with them
        std::swap(news.aspect.x, news.aspect.y);
        const VORN_TagItem* number = VORN_L_TagFind(image.imageTags, ITAG_Aspect);
        const double ratio = number ? VORN_L_TagGetDoubleVal(number) : news.aspect.ratio;
        if ((number || news.aspect.hasRatio) && ratio != 0) {
            news.aspect.hasRatio = true;
            news.aspect.ratio = 1 / ratio;
        }
    }
    int32_t channels = 0;
    if (image.colorConversion != 0 && findLong(image.imageTags, ITAG_Channels, channels)) {
        news.layout = true;
        const int32_t target =
            image.targetColorSpace == VORN_CS_CMAPPED ? VORN_CS_RGB : image.targetColorSpace;
        news.channels = blockChannels(channels, image.colorConversion, colorSpaceChannels(target));
        news.colorSpace = image.targetColorSpace;
    }
    return news;
}

void* write(const SaverNews& news, void* place) {
    if (news.layout) {
        place = VORN_L_writetag(place, ITAG_Channels, &news.channels, sizeof news.channels);
        place = VORN_L_writetag(place, ITAG_ColorSpace, &news.colorSpace, sizeof news.colorSpace);
    }
    if (news.aspect.hasParts) {
        place = VORN_L_writetag(place, ITAG_XAspect, &news.aspect.x, sizeof news.aspect.x);
        place = VORN_L_writetag(place, ITAG_YAspect, &news.aspect.y, sizeof news.aspect.y);
    }
    if (news.aspect.hasRatio) {
        place = VORN_L_writetag(place, ITAG_Aspect, &news.aspect.ratio, sizeof news.aspect.ratio);
    }
    return place;
}

}  // namespace
}  // namespace vorn

extern "C" {

VORN_Bool VORN_L_StartReadingImage(VORN_Image* image) {
    void* place = VORN_L_ImageHandleStartWriting(image, vorn::kLongItemSize + vorn::kEndItemSize);
    if (!place) return 0;
    const uint32_t command = CMD_LoadData;
    place = VORN_L_writetag(place, MTAG_Command, &command, sizeof command);
    VORN_L_writetag(place, TAG_End, nullptr, 0);
    VORN_L_ImageHandleEndWriting(image);
    image->expectAck(command);
    return vorn::firstAnswer(image);
}

VORN_Bool VORN_L_StartWritingImage(VORN_Image* image) {
    const vorn::SaverNews news = vorn::newsFor(*image);
    const uint32_t listSize = VORN_L_TagListSize(image->imageTags, nullptr);
    void* place = VORN_L_ImageHandleStartWriting(
        image, vorn::kLongItemSize + news.size() + listSize + vorn::kEndItemSize);
    if (!place) return 0;
    const uint32_t command = CMD_SaveData;
    place = VORN_L_writetag(place, MTAG_Command, &command, sizeof command);
    place =
        vorn::write(news, place);  // first, so that a search finds it before the handle's own tags
    VORN_L_TagCopyList(image->imageTags, place, image->axesSwapped);
    VORN_L_writetag(static_cast<uint8_t*>(place) + listSize, TAG_End, nullptr, 0);
    VORN_L_ImageHandleEndWriting(image);
    image->expectAck(command);
    return vorn::firstAnswer(image);
}

}  // extern "C"
