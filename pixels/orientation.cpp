#include "pixels/orientation.h"

#include <vorn/library.h>

#include <utility>

#include "pixels/line_view.h"
#include "transport/image.h"

namespace vorn {
namespace {

int32_t negated(int32_t step) { return static_cast<int32_t>(-int64_t{step}); }

template <class Rewrite>
void rewriteChannels(VORN_ChunkyBuffer& buffer, Rewrite rewrite) {
    for (int32_t c = 0; c < VORN_MAX_CHANNELS; c++) {
        if (isPresent(buffer, c)) {
            rewrite(c);
        }
    }
}

void moveToLastColumn(VORN_ChunkyBuffer& buffer, int32_t c) {
    buffer.channelPlace[c] += ptrdiff_t{buffer.pixelStep[c]} * (buffer.width - 1);
}

void moveToLastLine(VORN_ChunkyBuffer& buffer, int32_t c) {
    buffer.channelPlace[c] += ptrdiff_t{buffer.lineStep[c]} * (buffer.height - 1);
}

bool exchangesAxes(OrientationRoutine routine) {
    return routine == VORN_L_TurnA || routine == VORN_L_TurnB ||
           routine == VORN_L_MirrorColumnsTurnA || routine == VORN_L_MirrorColumnsTurnB ||
           routine == VORN_L_MirrorLinesTurnA || routine == VORN_L_MirrorLinesTurnB;
}

// By source (rows; 4 to 7 when one side is a mirror image and the other isn't) and target.
constexpr OrientationRoutine kCorrections[8][4] = {
    {nullptr, VORN_L_TurnA, VORN_L_HalfTurnCL, VORN_L_TurnB},
    {VORN_L_TurnB, nullptr, VORN_L_TurnA, VORN_L_HalfTurnLC},
    {VORN_L_HalfTurnCL, VORN_L_TurnB, nullptr, VORN_L_TurnA},
    {VORN_L_TurnA, VORN_L_HalfTurnLC, VORN_L_TurnB, nullptr},
    {VORN_L_MirrorColumns, VORN_L_MirrorLinesTurnA, VORN_L_MirrorLines, VORN_L_MirrorLinesTurnB},
    {VORN_L_MirrorColumnsTurnB, VORN_L_MirrorLines, VORN_L_MirrorColumnsTurnA,
     VORN_L_MirrorColumns},
    {VORN_L_MirrorLines, VORN_L_MirrorLinesTurnB, VORN_L_MirrorColumns, VORN_L_MirrorLinesTurnA},
    {VORN_L_MirrorColumnsTurnA, VORN_L_MirrorColumns, VORN_L_MirrorColumnsTurnB,
     VORN_L_MirrorLines},
};

constexpr int32_t kTurns = 4;

}  // namespace

void VORN_L_MirrorColumns(VORN_ChunkyBuffer& buffer) {
    rewriteChannels(buffer, [&](int32_t c) {
        moveToLastColumn(buffer, c);
        buffer.pixelStep[c] = negated(buffer.pixelStep[c]);
    });
}

void VORN_L_MirrorLines(VORN_ChunkyBuffer& buffer) {
    rewriteChannels(buffer, [&](int32_t c) {
        moveToLastLine(buffer, c);
        buffer.lineStep[c] = negated(buffer.lineStep[c]);
    });
}

void VORN_L_TurnA(VORN_ChunkyBuffer& buffer) {
    rewriteChannels(buffer, [&](int32_t c) {
        moveToLastColumn(buffer, c);
        const int32_t pixelStep = buffer.pixelStep[c];
        buffer.pixelStep[c] = buffer.lineStep[c];
        buffer.lineStep[c] = negated(pixelStep);
    });
    std::swap(buffer.width, buffer.height);
}

void VORN_L_TurnB(VORN_ChunkyBuffer& buffer) {
    rewriteChannels(buffer, [&](int32_t c) {
        moveToLastLine(buffer, c);
        const int32_t pixelStep = buffer.pixelStep[c];
        buffer.pixelStep[c] = negated(buffer.lineStep[c]);
        buffer.lineStep[c] = pixelStep;
    });
    std::swap(buffer.width, buffer.height);
}

void VORN_L_MirrorColumnsTurnA(VORN_ChunkyBuffer& buffer) {
    VORN_L_MirrorColumns(buffer);
    VORN_L_TurnA(buffer);
}

void VORN_L_MirrorColumnsTurnB(VORN_ChunkyBuffer& buffer) {
    VORN_L_MirrorColumns(buffer);
    VORN_L_TurnB(buffer);
}

void VORN_L_MirrorLinesTurnA(VORN_ChunkyBuffer& buffer) {
    VORN_L_MirrorLines(buffer);
    VORN_L_TurnA(buffer);
}

void VORN_L_MirrorLinesTurnB(VORN_ChunkyBuffer& buffer) {
    VORN_L_MirrorLines(buffer);
    VORN_L_TurnB(buffer);
}

void VORN_L_HalfTurnLC(VORN_ChunkyBuffer& buffer) {
    VORN_L_MirrorLines(buffer);
    VORN_L_MirrorColumns(buffer);
}

void VORN_L_HalfTurnCL(VORN_ChunkyBuffer& buffer) {
    VORN_L_MirrorColumns(buffer);
    VORN_L_MirrorLines(buffer);
}

}  // namespace vorn

VORN_Bool VORN_L_SetOrientationCorrection(VORN_Image* image, int32_t source, int32_t target) {
    constexpr int32_t kOrientations = 2 * vorn::kTurns;
    if (source == target || source < 0 || target < 0 || source >= kOrientations ||
        target >= kOrientations) {
        return 0;
    }
    const bool mirrored = (source >= vorn::kTurns) != (target >= vorn::kTurns);
    const int32_t row = source % vorn::kTurns + (mirrored ? vorn::kTurns : 0);
    image->orientation = vorn::kCorrections[row][target % vorn::kTurns];
    if (!vorn::exchangesAxes(image->orientation)) {
        return 0;
    }
    image->axesSwapped = true;
    return 1;
}
