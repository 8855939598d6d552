// The library's own way of adding tags to a handle.
#pragma once

#include <vorn/library.h>

namespace vorn {

// Stores user tag words in the list that a module type's information goes to: a loader's (1) in the
// image tag list, a saver's (2) in the side tag list, any other type's nowhere. False: error 17 is
// recorded.
bool ImageAddTags(VORN_Image* image, int32_t moduleType, const VORN_Word* words);

// The same for the handle's own module type.
bool ImageVaAddTags(VORN_Image* image, ...);

// The value of a LONG tag, searched in one list. False when there is none.
bool findLong(const VORN_TagItem* list, uint32_t id, int32_t& value);

// Implemented by pixels/: settles output size, orientation and colour conversion. False: errors 26,
// 30, 34, 17.
}  // namespace vorn

extern "C" VORN_Bool VORN_L_PrepareTransfer(VORN_Image* image);
