#include "formats/jpeg/jpeg_session.h"

#include <jerror.h>
#include <vorn/support.h>

namespace jpeg {
namespace {

int32_t meaningOf(int code) {
    switch (code) {
        case JERR_NO_SOI:
        case JERR_INPUT_EMPTY:
            return formats::kNotThisFormat;
        case JERR_BAD_PRECISION:
        case JERR_SOF_UNSUPPORTED:
        case JERR_IMAGE_TOO_BIG:
        case JERR_COMPONENT_COUNT:
        case JERR_CONVERSION_NOTIMPL:
        case JERR_CCIR601_NOTIMPL:
        case JERR_FRACT_SAMPLE_NOTIMPL:
        case JERR_ARITH_NOTIMPL:
        case JERR_NOTIMPL:
        case JERR_NOT_COMPILED:
        case JERR_WIDTH_OVERFLOW:
            return formats::kUnsupported;
        case JERR_OUT_OF_MEMORY:
        case JERR_NO_BACKING_STORE:
            return formats::kOutOfMemory;
        default:
            return formats::kDamaged;
    }
}

// Pixels were lost or invented. Other warnings are about things that don't change the picture.
bool isDamage(int code) {
    return code == JWRN_ARITH_BAD_CODE || code == JWRN_HIT_MARKER || code == JWRN_HUFF_BAD_CODE ||
           code == JWRN_JPEG_EOF || code == JWRN_MUST_RESYNC;
}

}  // namespace

Session::Session() {
    jpeg_std_error(&record_.manager);
    record_.manager.error_exit = &fail;
    record_.manager.emit_message = &message;
}

void Session::fail(j_common_ptr codec) {
    char text[JMSG_LENGTH_MAX];
    codec->err->format_message(codec, text);
    dblog("jpeg: %s\n", text);
    recordOf(codec).failure = formats::Failure{meaningOf(codec->err->msg_code)};
    std::longjmp(recordOf(codec).back, 1);
}

void Session::message(j_common_ptr codec, int level) {
    if (level < 0 && isDamage(codec->err->msg_code)) recordOf(codec).damaged = true;
}

}  // namespace jpeg
