// libpng behind a border that no exception and no longjmp crosses the wrong way.
#pragma once

#include <png.h>

#include <csetjmp>
#include <cstddef>

#include "formats/common/failure.h"

namespace png {

// The first pass of an interlaced file needs all lines and the last one completes them, so the
// modules have to hold the whole picture. A small file can claim a huge one: this is where that
// ends.
inline constexpr size_t kLargestPicture = size_t{1} << 30;

// One libpng structure for reading or writing.
class Session {
  public:
    enum class Direction { kRead, kWrite };

    // `failure` is what an error of libpng means, unless something else was noted before.
    Session(Direction direction, formats::Failure failure);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    png_structp png() const { return png_; }
    png_infop info() const { return info_; }

    // Runs calls of libpng; throws when one of them fails. The body may be left in the middle, so
    // nothing in it may have a destructor.
    template <class Body>
    void run(Body body) {
        if (setjmp(png_jmpbuf(png_)) != 0) throw failure_;
        body();
    }

    // For callbacks of libpng, which must not throw: runs the body, and hands what it throws on to
    // the run() that libpng was called from.
    template <class Body>
    static void callback(png_structp png, Body body) {
        auto* session = static_cast<Session*>(png_get_error_ptr(png));
        bool failed = false;
        try {
            body();
        } catch (const formats::Failure& failure) {
            session->failure_ = failure;
            failed = true;
        } catch (...) {
            failed = true;
        }
        if (failed) png_error(png, "the file could not be read or written");
    }

  private:
    void destroy();
    static void fail(png_structp png, png_const_charp text);
    static void warn(png_structp png, png_const_charp text);
    static png_voidp allocate(png_structp png, png_alloc_size_t size);
    static void release(png_structp png, png_voidp block);

    Direction direction_;
    formats::Failure failure_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

}  // namespace png
