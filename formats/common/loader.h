// A loader is a class: open() describes the image, readLine() delivers its lines. Everything else
// that a loader program needs (the callbacks, the blocks of lines, errors) is written here, once.
#pragma once

#include <cstdint>
#include <memory>

#include "formats/common/description.h"
#include "formats/common/failure.h"
#include "formats/common/files.h"

namespace formats {

// What the host wishes, and what a loader may make use of when its format has it.
struct Wishes {
    int32_t page = 1;   // ITAG_PageNumber: of a file that holds several images
    int32_t width = 0;  // ITAG_WantedWidth and ITAG_WantedHeight; 0: none
    int32_t height = 0;
    int32_t colorSpace = -1;  // ITAG_ColorSpace; -1: none. The library converts most; not "CMYK"
};

// One image. Any of its functions may throw a Failure.
class Loader {
  public:
    Loader() = default;
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;
    virtual ~Loader() = default;

    // Called before open().
    void setWishes(const Wishes& wishes) { wishes_ = wishes; }

    // Reads what stands before the pixels. The file is the loader's from here on.
    virtual Description open(InputFile file) = 0;

    // Called for the lines 0 to height - 1 in turn; fills the description's lineBytes().
    virtual void readLine(uint8_t* line) = 0;

  protected:
    const Wishes& wishes() const { return wishes_; }

  private:
    Wishes wishes_;
};

using LoaderFactory = std::unique_ptr<Loader> (*)();

// What a loader's main function does: serves the host until it ends. The result is the program's.
int runLoader(int argc, char** argv, LoaderFactory make);

template <class L>
int runLoader(int argc, char** argv) {
    return runLoader(argc, argv, [] { return std::unique_ptr<Loader>(std::make_unique<L>()); });
}

}  // namespace formats
