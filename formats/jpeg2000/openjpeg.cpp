#include "formats/jpeg2000/openjpeg.h"

#include <vorn/support.h>

#include <algorithm>
#include <string_view>

#include "formats/common/short_memory.h"

namespace jpeg2000 {
namespace {

constexpr OPJ_SIZE_T kBufferSize = 65536;
constexpr int kMostThreads = 8;

// openjpeg only says in its messages that an allocation has failed.
void report(const char* text, void*) {
    const std::string_view message = text;
    for (const std::string_view words : {"memory", "allocate", "system limits"}) {
        if (message.find(words) != std::string_view::npos) formats::memoryWasShort = true;
    }
    dblog("jpeg2000: %s", text);
}

}  // namespace

void prepare(opj_codec_t* codec) {
    if (!codec) throw formats::Failure{formats::kOutOfMemory};
    opj_set_warning_handler(codec, &report, nullptr);
    opj_set_error_handler(codec, &report, nullptr);
}

// It works without as well.
void useThreads(opj_codec_t* codec) {
    if (opj_has_thread_support())
        opj_codec_set_threads(codec, std::min(opj_get_num_cpus(), kMostThreads));
}

Stream::Stream(formats::InputFile& file) : in_(&file) {
    file.seek(0);
    open(true);
    opj_stream_set_user_data_length(stream_.get(), static_cast<OPJ_UINT64>(file.size()));
    opj_stream_set_read_function(stream_.get(), &read);
    opj_stream_set_skip_function(stream_.get(), &skip);
    opj_stream_set_seek_function(stream_.get(), &seek);
}

Stream::Stream(formats::OutputFile& file) : out_(&file) {
    open(false);
    opj_stream_set_write_function(stream_.get(), &write);
}

void Stream::open(bool input) {
    stream_.reset(opj_stream_create(kBufferSize, input));
    if (!stream_) throw formats::Failure{formats::kOutOfMemory};
    opj_stream_set_user_data(stream_.get(), this, nullptr);
}

void Stream::check(bool succeeded, formats::Failure otherwise) const {
    if (!succeeded) throw failure_.value_or(otherwise);
}

template <class Body>
bool Stream::guarded(void* self, Body body) {
    auto& stream = *static_cast<Stream*>(self);
    try {
        body(stream);
        return true;
    } catch (const formats::Failure& failure) {
        stream.failure_ = failure;
    } catch (...) {
        stream.failure_ = formats::Failure{formats::kOutOfMemory};
    }
    return false;
}

OPJ_SIZE_T Stream::read(void* bytes, OPJ_SIZE_T count, void* self) {
    OPJ_SIZE_T got = 0;
    guarded(self, [&](Stream& stream) {
        got = stream.in_->read(bytes, count);
        stream.place_ += static_cast<int64_t>(got);
    });
    return got > 0 ? got : static_cast<OPJ_SIZE_T>(-1);
}

OPJ_SIZE_T Stream::write(void* bytes, OPJ_SIZE_T count, void* self) {
    const bool written = guarded(self, [&](Stream& stream) {
        stream.out_->write(bytes, count);
        stream.place_ += static_cast<int64_t>(count);
    });
    return written ? count : static_cast<OPJ_SIZE_T>(-1);
}

OPJ_OFF_T Stream::skip(OPJ_OFF_T count, void* self) {
    const auto& stream = *static_cast<Stream*>(self);
    return count >= 0 && seek(stream.place_ + count, self) ? count : -1;
}

OPJ_BOOL Stream::seek(OPJ_OFF_T place, void* self) {
    return guarded(self, [&](Stream& stream) {
        stream.in_->seek(place);
        stream.place_ = place;
    });
}

}  // namespace jpeg2000
