// A class that decodes, as a plugin of libheif: it has a constructor without arguments,
// push(bytes), which is called once, and decode(). Any of them may throw.
#pragma once

#include <libheif/heif_plugin.h>

#include <cstddef>
#include <cstdint>
#include <span>

#include "formats/common/failure.h"

namespace heif {

// A decoded picture. The samples are the decoder's.
struct Decoded {
    struct Plane {
        const uint8_t* samples;
        ptrdiff_t step;  // bytes to the next line
        int width;
        int height;
    };
    heif_chroma chroma;
    int bits;
    Plane planes[3];  // one, where there are no colours
    uint16_t primaries;
    uint16_t transfer;
    uint16_t matrix;
    bool fullRange;
};

// The caller of libheif gets the picture. Throws.
heif_image* pictureOf(const Decoded& decoded);

heif_error errorOf(const formats::Failure& failure);

template <class Decoder>
class DecoderPlugin {
  public:
    // Libheif's own have a priority of up to 150.
    template <heif_compression_format kFormat>
    static heif_decoder_plugin make(const char* id) {
        heif_decoder_plugin plugin{};
        plugin.plugin_api_version = 3;
        plugin.get_plugin_name = [] { return "VORN"; };
        plugin.init_plugin = [] {};
        plugin.deinit_plugin = [] {};
        plugin.does_support_format = [](heif_compression_format format) {
            return format == kFormat ? 1000 : 0;
        };
        plugin.new_decoder = [](void** made) { return call([&] { *made = new Decoder; }); };
        plugin.free_decoder = [](void* decoder) { delete static_cast<Decoder*>(decoder); };
        plugin.push_data = [](void* decoder, const void* data, size_t size) {
            const std::span bytes(static_cast<const uint8_t*>(data), size);
            return call([&] { static_cast<Decoder*>(decoder)->push(bytes); });
        };
        plugin.decode_image = [](void* decoder, heif_image** made) {
            return call([&] { *made = pictureOf(static_cast<Decoder*>(decoder)->decode()); });
        };
        plugin.set_strict_decoding = [](void*, int) {};
        plugin.id_name = id;
        return plugin;
    }

  private:
    template <class Body>
    static heif_error call(Body body) {
        try {
            body();
            return {heif_error_Ok, heif_suberror_Unspecified, ""};
        } catch (const formats::Failure& failure) {
            return errorOf(failure);
        } catch (...) {
            return errorOf({formats::kOutOfMemory});
        }
    }
};

}  // namespace heif
