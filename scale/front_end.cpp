// The exported scaler functions: selection by name, and one call for each operation.
#include "scale/average_scaler.h"
#include "scale/bicubic_scaler.h"
#include "scale/bilinear_scaler.h"
#include "scale/nearest_scaler.h"
#include "scale/scaler.h"
#include "support/text.h"

namespace vorn {
namespace {

template <class Method>
Scaler* make() {
    return new Method;
}

struct NamedMethod {
    const char* name;
    Scaler* (*make)();
};

constexpr NamedMethod kMethods[] = {
    {"qdscale", make<NearestScaler>},  {"avscale", make<AverageScaler>},
    {"blscale", make<BilinearScaler>}, {"bcscale", make<BicubicScaler>},
    {"bestup", make<BicubicScaler>},   {"bestdown", make<AverageScaler>},
    {"fastest", make<NearestScaler>},
};

// The cubic filter takes no sizes below 2 and above 16000.
bool bicubicTakes(int32_t length) { return length >= 2 && length <= 16000; }

Scaler* scalerOf(VORN_Scaler* scaler) { return static_cast<Scaler*>(scaler); }

}  // namespace
}  // namespace vorn

extern "C" {

VORN_Scaler* VORN_S_AllocScaler(const char* name) {
    for (const vorn::NamedMethod& method : vorn::kMethods) {
        if (name && vorn::namesEqual(name, method.name)) return method.make();
    }
    return vorn::make<vorn::NearestScaler>();
}

const char* VORN_S_ChooseScaler(int32_t srcWidth,
                                int32_t srcLines,
                                int32_t dstWidth,
                                int32_t dstLines) {
    const bool enlarged = srcWidth < dstWidth || srcLines < dstLines;
    const bool narrow = srcWidth + srcLines <= 4 || dstWidth == 1 || dstLines == 1;
    if (srcWidth + srcLines == 2) return "fastest";
    if (!enlarged) return "bestdown";
    const bool cubic = vorn::bicubicTakes(srcWidth) && vorn::bicubicTakes(srcLines) &&
                       vorn::bicubicTakes(dstWidth) && vorn::bicubicTakes(dstLines);
    return cubic && !narrow ? "bestup" : "blscale";
}

int32_t VORN_S_InitScale(VORN_Scaler* scaler,
                         int32_t srcLines,
                         int32_t dstLines,
                         const VORN_ChunkyBuffer* source,
                         const VORN_ChunkyBuffer* destination,
                         VORN_LineCallback lineCallback,
                         void* userData) {
    if (!scaler) return VORN_S_CANT_GO_ON;
    if (!source || !destination) {
        VORN_S_EndScale(scaler);
        return VORN_S_CANT_GO_ON;
    }
    return vorn::scalerOf(scaler)->InitScale(
        {srcLines, dstLines, source, destination, lineCallback, userData});
}

int32_t VORN_S_SendData(VORN_Scaler* scaler) {
    return scaler ? vorn::scalerOf(scaler)->SendData() : VORN_S_CANT_GO_ON;
}

void VORN_S_EndScale(VORN_Scaler* scaler) {
    if (scaler) vorn::scalerOf(scaler)->EndScale();
}

void VORN_S_FreeScaler(VORN_Scaler* scaler) { delete vorn::scalerOf(scaler); }

}  // extern "C"
