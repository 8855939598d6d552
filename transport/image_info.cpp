// The information exchange that opens an image.
#include <cstring>

#include "errors/error_numbers.h"
#include "tags/tag_walk.h"
#include "transport/aspect.h"
#include "transport/image.h"
#include "transport/message.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

// Tags that say what the handle is. They are the library's own and no module's to answer.
constexpr uint32_t kProtectedTags[] = {ITAG_Input, ITAG_Output, MTAG_ModuleType, MTAG_ModuleName};

bool sendRequest(VORN_Image* image, int32_t type) {
    const bool loader = type == VORN_LOADER;
    const uint32_t command = loader ? CMD_LoadInfo : CMD_SaveInfo;
    const uint32_t imageSize = VORN_L_TagListSize(image->imageTags, nullptr);
    const uint32_t sideSize = loader ? VORN_L_TagListSize(image->sideTags, nullptr) : 0;
    auto* place = static_cast<uint8_t*>(
        VORN_L_ImageHandleStartWriting(image, kLongItemSize + imageSize + sideSize + kEndItemSize));
    if (!place) return false;
    place = static_cast<uint8_t*>(VORN_L_writetag(place, MTAG_Command, &command, sizeof command));
    VORN_L_TagCopyList(image->imageTags, place, 0);
    if (loader) VORN_L_TagCopyList(image->sideTags, place + imageSize, 0);
    std::memset(place + imageSize + sideSize, 0, kEndItemSize);
    VORN_L_ImageHandleEndWriting(image);
    image->expectAck(command);
    return true;
}

void hideProtected(const VORN_TagItem* answer) {
    for (const uint32_t id : kProtectedTags) {
        while (VORN_TagItem* item = VORN_L_TagFind(answer, id)) item->id = TAG_SkipTag;
    }
}

bool addAspect(VORN_Image* image) {
    const DerivedAspect derived = deriveAspect(image->imageTags);
    if (derived.hasParts) {
        return ImageVaAddTags(image, ITAG_XAspect, VORN_Word(derived.x), ITAG_YAspect,
                              VORN_Word(derived.y), TAG_End);
    }
    return !derived.hasRatio ||
           ImageVaAddTags(image, ITAG_Aspect, VORN_Word(&derived.ratio), TAG_End);
}

// Completes and checks the announced format in the handle's own copy, and adds what follows from
// it.
bool addFormat(VORN_Image* image) {
    VORN_TagItem* item = VORN_L_TagFind(image->imageTags, ITAG_DataFormat);
    if (!item) return true;
    VORN_DataFormat format{};
    const bool whole = itemDataSize(item) >= sizeof format;
    if (whole) {
        std::memcpy(&format, itemData(item), sizeof format);
        VORN_L_DataFormatMacroSetup(&format);
        std::memcpy(item + 1, &format, sizeof format);
    }
    if (!whole || !VORN_L_CheckDataFormat(&format)) {
        VORN_L_SetErrorCode(image, kErrorDataFormat, 0);
        return false;
    }
    const bool alpha = format.flags & VORN_DF_ALPHA;
    struct {
        uint32_t byteCount;
        uint8_t bits[VORN_MAX_CHANNELS];
    } bits{sizeof bits.bits, {}};
    std::memcpy(bits.bits, format.bitsPerChannel, sizeof bits.bits);
    return ImageVaAddTags(image, ITAG_Width, VORN_Word(format.width), ITAG_Height,
                          VORN_Word(format.height), ITAG_Channels, VORN_Word(format.channels),
                          ITAG_ImageChannelSize, VORN_Word(format.bytesPerChannel), ITAG_Alpha,
                          VORN_Word(alpha), ITAG_ImageChannels, VORN_Word(format.channels - alpha),
                          VORN_ID_BITS_PER_CHANNEL, VORN_Word(&bits), TAG_End);
}

bool merge(VORN_Image* image, const VORN_TagItem* answer, int32_t type) {
    hideProtected(answer);
    if (!ImageVaAddTags(image, TAG_Taglist, VORN_Word(answer), TAG_End)) return false;
    return type != VORN_LOADER || (addAspect(image) && addFormat(image));
}

}  // namespace
}  // namespace vorn

extern "C" VORN_Bool VORN_L_WaitForInfo(VORN_Image* image) {
    const int32_t type = VORN_L_ImageGetModType(image);
    if (type != VORN_LOADER && type != VORN_SAVER) {
        VORN_L_SetErrorCode(image, vorn::kErrorModuleType, 0);
        return 0;
    }
    vorn::Message answer;
    if (!vorn::sendRequest(image, type) || !vorn::receiveMessage(*image, answer)) return 0;
    const bool errorSeen = VORN_L_HandleErrorCode(image, answer.list);
    bool result = !errorSeen;
    // Only what the module reports for the picture is merged, not an acknowledgement in its place.
    bool acknowledged = VORN_L_HandleAckMsg(image, answer.list);
    if (result && !acknowledged) result = vorn::merge(image, answer.list, type);
    VORN_L_ImageHandleEndReading(image);
    if (!acknowledged) {
        if (!vorn::receiveMessage(*image, answer)) return 0;
        acknowledged = VORN_L_HandleAckMsg(image, answer.list);
        const bool lateError = VORN_L_HandleErrorCode(image, answer.list);
        VORN_L_ImageHandleEndReading(image);
        if (acknowledged) return result && !lateError;
    }
    if (!errorSeen) VORN_L_SetErrorCode(image, vorn::kErrorProtocol, 0);
    return 0;
}
