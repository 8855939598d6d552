// libheif's objects, owned, and its errors as a module's.
#pragma once

#include <libheif/heif.h>

#include <memory>

#include "formats/common/failure.h"

namespace heif {

struct Releaser {
    void operator()(heif_context* context) const { heif_context_free(context); }
    void operator()(heif_image_handle* handle) const { heif_image_handle_release(handle); }
    void operator()(heif_image* image) const { heif_image_release(image); }
    void operator()(heif_encoder* encoder) const { heif_encoder_release(encoder); }
    void operator()(heif_decoding_options* options) const { heif_decoding_options_free(options); }
    void operator()(heif_encoding_options* options) const { heif_encoding_options_free(options); }
    void operator()(heif_color_profile_nclx* n) const { heif_nclx_color_profile_free(n); }
};

template <class Object>
using Owner = std::unique_ptr<Object, Releaser>;

// An object that libheif makes without more to say than null when it can't.
template <class Object>
Owner<Object> made(Object* object) {
    if (!object) throw formats::Failure{formats::kOutOfMemory};
    return Owner<Object>(object);
}

// Throws unless a call of libheif succeeded: `reason`, where memory was not what was missing.
inline void check(const heif_error& error, int32_t reason) {
    if (error.code == heif_error_Ok) return;
    if (error.code != heif_error_Memory_allocation_error) throw formats::Failure{reason};
    // libheif's own limits say nothing of the memory that there is.
    if (error.subcode != heif_suberror_Security_limit_exceeded) VORN_M_MemoryIsShort();
    throw formats::Failure{formats::kOutOfMemory};
}

}  // namespace heif
