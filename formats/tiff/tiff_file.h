// libtiff on top of a module's files, behind a border that no exception crosses.
#pragma once

#include <tiffio.h>

#include "formats/common/failure.h"
#include "formats/common/files.h"

namespace tiff_format {  // libtiff has a struct tiff

// libtiff says that something failed, and reports the text; what a file function threw before is
// the better reason.
class TiffFile {
  public:
    enum class Direction { kRead, kWrite };

    explicit TiffFile(formats::InputFile file);
    // `large`: with 64-bit places, for more than 4 GiB.
    TiffFile(formats::OutputFile& file, bool large);
    ~TiffFile() { close(); }
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    TIFF* get() const { return tiff_; }

    // Throws unless a call of libtiff succeeded.
    void check(bool succeeded) const;

    // Without writing anything more.
    void close();

  private:
    template <class Body>
    static auto guarded(thandle_t handle, Body body) -> decltype(body());
    static tmsize_t read(thandle_t handle, void* bytes, tmsize_t count);
    static tmsize_t write(thandle_t handle, void* bytes, tmsize_t count);
    static toff_t seek(thandle_t handle, toff_t offset, int origin);
    static toff_t size(thandle_t handle);
    static int report(TIFF*, void*, const char* module, const char* format, va_list arguments);
    void open(const char* mode);

    formats::InputFile in_;
    formats::OutputFile* out_ = nullptr;
    toff_t place_ = 0;
    toff_t end_ = 0;
    formats::Failure failure_;
    TIFF* tiff_ = nullptr;
};

}  // namespace tiff_format
