// Drives a scaler as a caller does, and collects what it makes.
#pragma once

#include <gtest/gtest.h>
#include <vorn/scaler.h>

#include <string>

#include "tests/scale/test_image.h"

namespace vorn_test {

struct ScaleRun {
    const char* method = "fastest";
    int32_t width = 1, lines = 1;                  // of the destination
    unsigned sourceForm = 0, destinationForm = 0;  // of the bands
    int32_t sourceBand = 1, destinationBand = 1;
    unsigned sourceMask = 0xFF, destinationMask = 0xFF;  // channels present
    bool announced = true;                               // with a line callback
    std::string codes = {};                              // out: every answer of SendData

    friend std::ostream& operator<<(std::ostream& out, const ScaleRun& run) {
        return out << run.method << " to " << run.width << "x" << run.lines << ", forms "
                   << run.sourceForm << " " << run.destinationForm << ", bands " << run.sourceBand
                   << " " << run.destinationBand << ", masks " << run.sourceMask << " "
                   << run.destinationMask << (run.announced ? "" : ", not announced");
    }
};

inline int32_t countLine(void* count) {
    ++*static_cast<int32_t*>(count);
    return 0;
}

// Fills the band's next lines. What it held before is overwritten: a scaler may not need it.
inline void fillBand(Picture& band, const Image& image, int32_t& next) {
    std::fill(band.memory.begin(), band.memory.end(), uint8_t{0x3C});
    for (int32_t line = 0; line < band.record.height && next < image.lines; ++line, ++next) {
        for (int32_t c = 0; c < image.channels; ++c) {
            for (int32_t x = 0; band.has(c) && x < image.width; ++x)
                band.set(c, x, line, image.at(x, next, c));
        }
    }
}

// Scales a whole image. Channels that are absent stay 0 in the result.
inline Image scaleThrough(const Image& image, ScaleRun& run) {
    Picture source = bandOf({image.width, run.sourceBand, image.channels, image.bytes},
                            run.sourceForm, run.sourceMask);
    Picture destination = bandOf({run.width, run.destinationBand, image.channels, image.bytes},
                                 run.destinationForm, run.destinationMask, 64);
    Image result(run.width, run.lines, image.channels, image.bytes);
    int32_t read = 0, made = 0, taken = 0;
    VORN_Scaler* scaler = VORN_S_AllocScaler(run.method);
    EXPECT_EQ(VORN_S_READY,
              VORN_S_InitScale(scaler, image.lines, run.lines, &source.record, &destination.record,
                               run.announced ? countLine : nullptr, &made));
    int32_t code = VORN_S_FILL_SOURCE;
    const unsigned present = run.sourceMask & run.destinationMask;
    while (code != VORN_S_FINISHED) {
        code = VORN_S_SendData(scaler);
        run.codes += static_cast<char>('0' + code);
        if (code <= 0 || run.codes.size() > 400000) {
            ADD_FAILURE() << "stuck with " << code;
            break;
        }
        if (code == VORN_S_FILL_SOURCE) {
            EXPECT_LT(read, image.lines) << "asks for more lines than there are";
            fillBand(source, image, read);
        }
        if (code != VORN_S_TAKE_DESTINATION) continue;
        if (!run.announced) made = std::min(taken + run.destinationBand, run.lines);
        for (; taken < made; ++taken) {
            for (int32_t c = 0; c < image.channels; ++c) {
                if (!((present >> c) & 1)) continue;
                for (int32_t x = 0; x < run.width; ++x) {
                    result.at(x, taken, c) = destination.get(c, x, taken % run.destinationBand);
                }
            }
        }
    }
    VORN_S_FreeScaler(scaler);
    EXPECT_EQ(run.lines, taken);
    for (int32_t c = 0; c < image.channels; ++c) {  // what has no source must be left alone
        if (!((present >> c) & 1)) destination.drop(c);
    }
    EXPECT_TRUE(destination.hasIntactGaps());
    return result;
}

}  // namespace vorn_test
