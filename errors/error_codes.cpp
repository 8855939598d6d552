// Recording and reading error pairs.
#include <vorn/host.h>
#include <vorn/library.h>

#include "errors/error_state.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

ErrorRecord& threadRecord() { return threadState<ErrorState>().record; }

VORN_ErrorPair packed(const CodePair& pair) {
    const auto code = static_cast<uint32_t>(pair.code);
    const auto subcode = static_cast<uint32_t>(pair.subcode);
    return uint64_t{subcode} << 32 | code;
}

void record(VORN_Image* image, CodePair ErrorRecord::*kind, CodePair pair) {
    threadRecord().*kind = pair;
    if (image != nullptr) {
        errorRecordOf(*image).*kind = pair;
    }
}

VORN_ErrorPair recorded(VORN_Image* image, CodePair ErrorRecord::*kind) {
    return packed((image != nullptr ? errorRecordOf(*image) : threadRecord()).*kind);
}

}  // namespace
}  // namespace vorn

using namespace vorn;

void VORN_L_SetErrorCode(VORN_Image* image, int32_t code, int32_t subcode) {
    record(image, &ErrorRecord::error, {code, subcode});
}

void VORN_L_SetWarningCode(VORN_Image* image, int32_t code, int32_t subcode) {
    record(image, &ErrorRecord::warning, {code, subcode});
}

void VORN_L_SetErrorCode_DEBUG(
    VORN_Image* image, int32_t code, int32_t subcode, VORN_Word a, VORN_Word b) {
    VORN_L_SetErrorCode(image, code, subcode);
    VORN_Word(&debug)[2] = threadState<ErrorState>().debug;
    debug[0] = code != 0 ? a : 0;
    debug[1] = code != 0 ? b : 0;
}

VORN_ErrorPair VORN_H_ImageGetError(VORN_Image* image) {
    return recorded(image, &ErrorRecord::error);
}

VORN_ErrorPair VORN_H_ImageGetWarning(VORN_Image* image) {
    return recorded(image, &ErrorRecord::warning);
}
