// What a thread keeps about errors.
#pragma once

#include "errors/error_record.h"
#include "errors/error_strings.h"

namespace vorn {

struct ErrorState {
    ErrorRecord record;
    VORN_Word debug[2] = {0, 0};  // of the last VORN_L_SetErrorCode_DEBUG
    ErrorStrings strings;
    char message[256] =
        "";  // what VORN_H_ImageGetErrorString answered last; 183 are filled at most
};

}  // namespace vorn
