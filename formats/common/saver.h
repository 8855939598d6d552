// A saver is a class: open() writes what stands before the pixels, writeLine() takes the lines,
// finish() writes what stands behind them. Everything else that a saver program needs (the
// callbacks, receiving and converting lines, putting the finished file in its place, errors) is
// written here, once.
#pragma once

#include <cstdint>
#include <memory>

#include "formats/common/failure.h"
#include "formats/common/files.h"
#include "formats/common/image_to_save.h"

namespace formats {

// How a saver wants its lines: pixel by pixel, the channels of a pixel side by side. The host's
// samples are converted to this size (least significant byte first); of more channels than the host
// sends, the rest stays 0.
struct LineLayout {
    int32_t channels = 0;
    int32_t bytesPerChannel = 1;
};

// One image. Any of its functions may throw a Failure.
class Saver {
  public:
    Saver() = default;
    Saver(const Saver&) = delete;
    Saver& operator=(const Saver&) = delete;
    virtual ~Saver() = default;

    // Checks that the format can hold the image (kCannotSave). The file lives until the saver's
    // end.
    virtual LineLayout open(const ImageToSave& image, OutputFile& file) = 0;

    // Called for the lines 0 to height - 1 in turn.
    virtual void writeLine(const uint8_t* line) = 0;

    // Called when all lines have come. The file is put in its place afterwards.
    virtual void finish() {}
};

using SaverFactory = std::unique_ptr<Saver> (*)();

// Whether the host turns the pictures upright, or the saver notes in the file (ITAG_Orientation)
// how they are to be turned.
enum class Turning { kByHost, kNotedInFile };

// What a saver's main function does: serves the host until it ends. The result is the program's.
int runSaver(int argc, char** argv, SaverFactory make, Turning turning);

template <class S>
int runSaver(int argc, char** argv, Turning turning = Turning::kByHost) {
    return runSaver(
        argc, argv, [] { return std::unique_ptr<Saver>(std::make_unique<S>()); }, turning);
}

}  // namespace formats
