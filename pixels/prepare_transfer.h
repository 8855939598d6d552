// What is settled once before a transfer.
#pragma once

#include <vorn/types.h>

namespace vorn {

// The colour space that a saver gets for a picture in `colorSpace`: that one when the saver's
// capability file lists it, else the first of its list. 0: there is no list.
int32_t VORN_L_ChooseSaverColorSpace(const char* moduleFileName, int32_t type, int32_t colorSpace);

}  // namespace vorn
