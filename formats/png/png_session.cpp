#include "formats/png/png_session.h"

#include <vorn/support.h>

namespace png {

Session::Session(Direction direction, formats::Failure failure)
    : direction_(direction), failure_(failure) {
    const auto create =
        direction == Direction::kRead ? &png_create_read_struct_2 : &png_create_write_struct_2;
    png_ = create(PNG_LIBPNG_VER_STRING, this, &fail, &warn, this, &allocate, &release);
    if (png_) info_ = png_create_info_struct(png_);
    if (info_) return;
    destroy();
    throw formats::Failure{formats::kOutOfMemory};
}

Session::~Session() { destroy(); }

void Session::destroy() {
    if (direction_ == Direction::kRead)
        png_destroy_read_struct(&png_, &info_, nullptr);
    else
        png_destroy_write_struct(&png_, &info_);
}

void Session::fail(png_structp png, png_const_charp text) {
    dblog("png: %s\n", text);
    png_longjmp(png, 1);
}

void Session::warn(png_structp, png_const_charp text) { dblog("png: %s\n", text); }

// Damage in a file shows as an error too, so a lack of memory has to be told apart here.
png_voidp Session::allocate(png_structp png, png_alloc_size_t size) {
    void* block = AllocMemory(size, 0);
    if (!block) static_cast<Session*>(png_get_mem_ptr(png))->failure_ = {formats::kOutOfMemory, 0};
    return block;
}

void Session::release(png_structp, png_voidp block) { FreeMemory(block); }

}  // namespace png
