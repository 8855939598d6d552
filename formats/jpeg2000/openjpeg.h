// openjpeg on top of a module's files, behind a border that no exception crosses.
#pragma once

#include <openjpeg.h>

#include <memory>
#include <optional>

#include "formats/common/failure.h"
#include "formats/common/files.h"

namespace jpeg2000 {

struct CodecReleaser {
    void operator()(opj_codec_t* codec) const { opj_destroy_codec(codec); }
};
using Codec = std::unique_ptr<opj_codec_t, CodecReleaser>;

struct ImageReleaser {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using Image = std::unique_ptr<opj_image_t, ImageReleaser>;

// The messages go to the log; several threads work for one codec.
void prepare(opj_codec_t* codec);
void useThreads(opj_codec_t* codec);

// A file as openjpeg reads or writes it, from where it stands.
class Stream {
  public:
    explicit Stream(formats::InputFile& file);
    explicit Stream(formats::OutputFile& file);

    opj_stream_t* get() const { return stream_.get(); }

    // Throws unless a call of openjpeg succeeded: what a file function threw before is the better
    // reason.
    void check(bool succeeded, formats::Failure otherwise) const;

    int64_t written() const { return place_; }

  private:
    struct Releaser {
        void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
    };
    template <class Body>
    static bool guarded(void* self, Body body);
    static OPJ_SIZE_T read(void* bytes, OPJ_SIZE_T count, void* self);
    static OPJ_SIZE_T write(void* bytes, OPJ_SIZE_T count, void* self);
    static OPJ_OFF_T skip(OPJ_OFF_T count, void* self);
    static OPJ_BOOL seek(OPJ_OFF_T place, void* self);
    void open(bool input);

    formats::InputFile* in_ = nullptr;
    formats::OutputFile* out_ = nullptr;
    int64_t place_ = 0;
    std::optional<formats::Failure> failure_;
    std::unique_ptr<opj_stream_t, Releaser> stream_;
};

}  // namespace jpeg2000
