#include "pixels/prepare_transfer.h"

#include <vorn/host.h>
#include <vorn/library.h>

#include <cstring>
#include <utility>

#include "errors/error_numbers.h"
#include "platform/path.h"
#include "support/memory.h"
#include "transport/image.h"
#include "transport/tag_exchange.h"

namespace vorn {
namespace {

struct Size {
    int32_t width = 0;
    int32_t height = 0;
    bool operator==(const Size&) const = default;
    Size exchangedWhen(bool swapped) const { return swapped ? Size{height, width} : *this; }
};

bool fail(VORN_Image& image, int32_t code) {
    VORN_L_SetErrorCode(&image, code, 0);
    return false;
}

bool isPossible(int32_t length) { return length >= 1 && length <= VORN_MAX_SIZE; }

// Nothing of an earlier image may stay.
void forgetCorrections(VORN_Image& image) {
    image.orientation = nullptr;
    image.axesSwapped = false;
    image.sizeDiffers = false;
    image.colorConversion = 0;
    image.targetColorSpace = -1;
    image.prepared = false;
}

// Between the module's orientation and the host's, in that order for both kinds of module: a
// correction makes the host's memory look like the module's picture, and reading and writing
// through it are mirror images.
void chooseOrientation(VORN_Image& image, bool saver) {
    int32_t ofImage = 0;  // a loader's own, a saver's host's
    int32_t ofSide = 0;
    if (findLong(image.sideTags, ITAG_Orientation, ofSide) && ofSide >= 0 &&
        findLong(image.imageTags, ITAG_Orientation, ofImage)) {
        VORN_L_SetOrientationCorrection(&image, saver ? ofSide : ofImage, saver ? ofImage : ofSide);
    }
}

// The output size is kept in the module's terms. What the host says, in a loader's side list or a
// saver's image list, is in the host's.
bool chooseSize(VORN_Image& image, bool saver) {
    Size own;
    if (!findLong(image.imageTags, ITAG_Width, own.width) ||
        !findLong(image.imageTags, ITAG_Height, own.height)) {
        return fail(image, kErrorNoSize);
    }
    own = own.exchangedWhen(saver && image.axesSwapped);
    const bool sideSwapped = !saver && image.axesSwapped;
    Size wanted = own.exchangedWhen(sideSwapped);
    findLong(image.sideTags, ITAG_Width, wanted.width);
    findLong(image.sideTags, ITAG_Height, wanted.height);
    wanted = wanted.exchangedWhen(sideSwapped);
    if (!isPossible(wanted.width) || !isPossible(wanted.height)) {
        return fail(image, kErrorSize);
    }
    image.sizeDiffers = wanted != own;
    image.outputWidth = wanted.width;
    image.outputHeight = wanted.height;
    return true;
}

bool chooseSaverColors(VORN_Image& image) {
    const VORN_TagItem* name = VORN_L_TagFind(image.imageTags, MTAG_ModuleName);
    int32_t colorSpace = 0;
    if (name == nullptr || !findLong(image.imageTags, ITAG_ColorSpace, colorSpace)) {
        return true;
    }
    const Owned<char> fileName(VORN_L_TagGetString(name));
    if (!fileName) {
        return fail(image, kErrorMemory);
    }
    image.targetColorSpace = VORN_L_ChooseSaverColorSpace(fileName.get(), VORN_SAVER, colorSpace);
    if (image.targetColorSpace == 0) {
        return fail(image, kErrorMemory);
    }
    VORN_L_SetColorSpaceCorrection(&image.colorConversion, colorSpace, image.targetColorSpace);
    return true;
}

void chooseLoaderColors(VORN_Image& image) {
    int32_t colorSpace = 0;
    findLong(image.sideTags, ITAG_ColorSpace, image.targetColorSpace);
    if (image.targetColorSpace >= 0 && findLong(image.imageTags, ITAG_ColorSpace, colorSpace)) {
        VORN_L_SetColorSpaceCorrection(&image.colorConversion, colorSpace, image.targetColorSpace);
    }
}

struct StringListDeleter {
    void operator()(char** list) const { VORN_H_FreeStringList(list); }
};

}  // namespace

int32_t VORN_L_ChooseSaverColorSpace(const char* moduleFileName, int32_t type, int32_t colorSpace) {
    const char* separator = std::strrchr(moduleFileName, platform::kSeparator);
    VORN_L_GetParseCap(separator != nullptr ? separator + 1 : moduleFileName, type);
    const std::unique_ptr<char*, StringListDeleter> list(
        VORN_L_StringToStringList(VORN_L_GetColorSpaces()));
    if (!list) {
        return 0;
    }
    return VORN_L_ColorSpaceInList(colorSpace, list.get()) ? colorSpace
                                                           : VORN_L_FindColorSpace(*list);
}

}  // namespace vorn

VORN_Bool VORN_L_PrepareTransfer(VORN_Image* image) {
    vorn::forgetCorrections(*image);
    const int32_t type = VORN_L_ImageGetModType(image);
    if (type != VORN_LOADER && type != VORN_SAVER) {
        return vorn::fail(*image, vorn::kErrorModuleType);
    }
    const bool saver = type == VORN_SAVER;
    vorn::chooseOrientation(*image, saver);
    if (!vorn::chooseSize(*image, saver)) {
        return 0;
    }
    image->prepared = true;
    if (saver) {
        return vorn::chooseSaverColors(*image);
    }
    vorn::chooseLoaderColors(*image);
    return 1;
}
