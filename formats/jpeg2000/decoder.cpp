#include "formats/jpeg2000/decoder.h"

#include <algorithm>

namespace jpeg2000 {

Decoder::Decoder(formats::InputFile& file, OPJ_CODEC_FORMAT format, uint32_t reduction)
    : stream_(file), codec_(opj_create_decompress(format)) {
    prepare(codec_.get());
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    parameters.cp_reduce = reduction;
    check(opj_setup_decoder(codec_.get(), &parameters));
    useThreads(codec_.get());
    opj_image_t* made = nullptr;
    const bool read = opj_read_header(stream_.get(), codec_.get(), &made);
    image_.reset(made);
    check(read && made && made->numcomps > 0);
}

void Decoder::check(bool succeeded) const {
    stream_.check(succeeded, formats::Failure{formats::kDamaged});
}

uint32_t Decoder::mostReduction() const {
    opj_codestream_info_v2_t* info = opj_get_cstr_info(codec_.get());
    if (!info) return 0;
    uint32_t least = 1;
    const opj_tccp_info_t* components = info->m_default_tile_info.tccp_info;
    for (uint32_t c = 0; components && c < info->nbcomps; ++c) {
        const uint32_t sizes = components[c].numresolutions;
        least = c == 0 ? sizes : std::min(least, sizes);
    }
    opj_destroy_cstr_info(&info);
    return least > 0 ? least - 1 : 0;
}

void Decoder::decode(const Area* area) {
    if (area)
        check(opj_set_decode_area(codec_.get(), image_.get(), static_cast<int32_t>(area->x0),
                                  static_cast<int32_t>(area->y0), static_cast<int32_t>(area->x1),
                                  static_cast<int32_t>(area->y1)));
    check(opj_decode(codec_.get(), stream_.get(), image_.get()));
    for (uint32_t c = 0; c < image_->numcomps; ++c) {
        const opj_image_comp_t& component = image_->comps[c];
        check(component.data && component.w > 0 && component.h > 0);
    }
}

}  // namespace jpeg2000
