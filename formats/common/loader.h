// A loader is a class: open() describes the image, readLine() delivers its lines. Everything else
// that a loader program needs (the callbacks, the blocks of lines, errors) is written here, once.
#pragma once

#include <cstdint>
#include <memory>

#include "formats/common/description.h"
#include "formats/common/failure.h"
#include "formats/common/files.h"

namespace formats {

// One image. Any of its functions may throw a Failure.
class Loader {
  public:
    Loader() = default;
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;
    virtual ~Loader() = default;

    // Reads what stands before the pixels. The file is the loader's from here on.
    virtual Description open(InputFile file) = 0;

    // Called for the lines 0 to height - 1 in turn; fills the description's lineBytes().
    virtual void readLine(uint8_t* line) = 0;
};

using LoaderFactory = std::unique_ptr<Loader> (*)();

// What a loader's main function does: serves the host until it ends. The result is the program's.
int runLoader(int argc, char** argv, LoaderFactory make);

template <class L>
int runLoader(int argc, char** argv) {
    return runLoader(argc, argv, [] { return std::unique_ptr<Loader>(std::make_unique<L>()); });
}

}  // namespace formats
