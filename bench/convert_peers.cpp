#include "convert_peers.h"

#include <png.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <vector>

#if defined(VORN_BENCH_JPEG)
#include <jpeglib.h>
#endif
#if defined(VORN_BENCH_TIFF)
#include <tiffio.h>
#endif

// Everything is 8-bit RGB, not interlaced. Readers and writers are alike: they are opened with a
// file, hand out or take one line after the other, and are ended.
namespace vorn_bench {
namespace {

std::FILE* openFile(const char* name, const char* mode) {
    std::FILE* file = std::fopen(name, mode);
    if (!file) std::exit(1);
    return file;
}

struct PngReader {
    explicit PngReader(const char* in) : file(openFile(in, "rb")) {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        info = png_create_info_struct(png);
        if (setjmp(png_jmpbuf(png))) std::exit(1);
        png_init_io(png, file);
        png_read_info(png, info);
        width = png_get_image_width(png, info);
        height = png_get_image_height(png, info);
        if (png_get_rowbytes(png, info) != 3 * width) std::exit(1);
    }
    void read(uint8_t* line) { png_read_row(png, line, nullptr); }
    void end() { png_read_end(png, nullptr); }

    std::FILE* file;
    png_structp png;
    png_infop info;
    size_t width = 0, height = 0;
};

struct PpmWriter {
    PpmWriter(const char* out, size_t columns, size_t lines)
        : file(openFile(out, "wb")), width(columns) {
        std::fprintf(file, "P6\n%zu %zu\n255\n", width, lines);
    }
    void write(const uint8_t* line) { std::fwrite(line, 3, width, file); }
    void end() { std::fclose(file); }

    std::FILE* file;
    size_t width;
};

struct PngWriter {
    PngWriter(const char* out, size_t width, size_t lines) : file(openFile(out, "wb")) {
        png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        info = png_create_info_struct(png);
        if (setjmp(png_jmpbuf(png))) std::exit(1);
        png_init_io(png, file);
        png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(lines), 8,
                     PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        png_set_compression_level(png, 6);
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_PAETH);
        png_write_info(png, info);
    }
    void write(const uint8_t* line) { png_write_row(png, line); }
    void end() {
        png_write_end(png, info);
        std::fclose(file);
    }

    std::FILE* file;
    png_structp png;
    png_infop info;
};

#if defined(VORN_BENCH_JPEG)
struct JpegReader {
    explicit JpegReader(const char* in, unsigned reducedBy = 1) : file(openFile(in, "rb")) {
        codec.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&codec);
        jpeg_stdio_src(&codec, file);
        jpeg_read_header(&codec, TRUE);
        codec.scale_num = 1;
        codec.scale_denom = reducedBy;
        codec.out_color_space = JCS_RGB;
        jpeg_start_decompress(&codec);
        width = codec.output_width;
        height = codec.output_height;
    }
    void read(uint8_t* line) { jpeg_read_scanlines(&codec, &line, 1); }
    void end() { jpeg_finish_decompress(&codec); }

    std::FILE* file;
    jpeg_error_mgr errors;
    jpeg_decompress_struct codec;
    size_t width = 0, height = 0;
};

struct JpegWriter {
    JpegWriter(const char* out, size_t width, size_t lines, int sharing = 1)
        : file(openFile(out, "wb")) {
        codec.err = jpeg_std_error(&errors);
        jpeg_create_compress(&codec);
        jpeg_stdio_dest(&codec, file);
        codec.image_width = static_cast<JDIMENSION>(width);
        codec.image_height = static_cast<JDIMENSION>(lines);
        codec.input_components = 3;
        codec.in_color_space = JCS_RGB;
        jpeg_set_defaults(&codec);
        jpeg_set_quality(&codec, 90, TRUE);
        codec.comp_info[0].h_samp_factor = codec.comp_info[0].v_samp_factor = sharing;
        jpeg_start_compress(&codec, TRUE);
    }
    void write(const uint8_t* line) {
        auto* row = const_cast<JSAMPROW>(line);
        jpeg_write_scanlines(&codec, &row, 1);
    }
    void end() {
        jpeg_finish_compress(&codec);
        std::fclose(file);
    }

    std::FILE* file;
    jpeg_error_mgr errors;
    jpeg_compress_struct codec;
};
#endif

#if defined(VORN_BENCH_TIFF)
struct TiffWriter {
    TiffWriter(const char* out, size_t width, size_t lines) : tiff(TIFFOpen(out, "wl")) {
        if (!tiff) std::exit(1);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(width));
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(lines));
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
    }
    void write(uint8_t* line) { TIFFWriteScanline(tiff, line, next++, 0); }
    void end() { TIFFClose(tiff); }

    TIFF* tiff;
    uint32_t next = 0;
};
#endif

template <class Reader, class Writer>
int copy(const char* in, const char* out) {
    Reader reader(in);
    Writer writer(out, reader.width, reader.height);
    std::vector<uint8_t> line(3 * reader.width);
    for (size_t y = 0; y < reader.height; ++y) {
        reader.read(line.data());
        writer.write(line.data());
    }
    reader.end();
    writer.end();
    return 0;
}

// The mean of each 2 by 2 pixels.
void halve(const uint8_t* above, const uint8_t* below, uint8_t* out, size_t width) {
    for (size_t x = 0; x < width; ++x) {
        for (size_t c = 0; c < 3; ++c) {
            const size_t i = 6 * x + c;
            const int sum = above[i] + above[i + 3] + below[i] + below[i + 3];
            out[3 * x + c] = static_cast<uint8_t>((sum + 2) / 4);
        }
    }
}

template <class Reader, class Writer>
int halved(const char* in, const char* out) {
    Reader reader(in);
    Writer writer(out, reader.width / 2, reader.height / 2);
    std::vector<uint8_t> above(3 * reader.width), below(3 * reader.width), line(3 * reader.width);
    for (size_t y = 0; y < reader.height / 2; ++y) {
        reader.read(above.data());
        reader.read(below.data());
        halve(above.data(), below.data(), line.data(), reader.width / 2);
        writer.write(line.data());
    }
    reader.end();
    writer.end();
    return 0;
}

#if defined(VORN_BENCH_JPEG)
constexpr size_t kThumbnailWidth = 400;

// Source items under the box of one destination item, and how much of each, 65536 in all.
struct Box {
    size_t first;
    std::vector<uint32_t> weights;
};

std::vector<Box> boxes(size_t from, size_t to) {
    std::vector<Box> all(to);
    for (size_t i = 0; i < to; ++i) {
        Box& box = all[i];
        box.first = i * from / to;
        uint32_t left = 65536;
        for (size_t k = box.first; k * to < (i + 1) * from; ++k) {
            const size_t part = std::min((k + 1) * to, (i + 1) * from) - std::max(k * to, i * from);
            box.weights.push_back(std::min(left, static_cast<uint32_t>(65536 * part / from)));
            left -= box.weights.back();
        }
        box.weights.back() += left;
    }
    return all;
}

// The picture is decoded at an eighth; its lines are made narrow, then weighed.
int thumbnail(const char* in, const char* out) {
    JpegReader reader(in, 8);
    const size_t lines = (reader.height * kThumbnailWidth + reader.width / 2) / reader.width;
    const std::vector<Box> across = boxes(reader.width, kThumbnailWidth);
    const std::vector<Box> down = boxes(reader.height, lines);
    std::vector<uint8_t> line(3 * reader.width), narrow(3 * kThumbnailWidth);
    std::vector<uint32_t> sums(narrow.size());
    JpegWriter writer(out, kThumbnailWidth, lines);
    size_t read = 0;
    for (const Box& rows : down) {
        std::fill(sums.begin(), sums.end(), 32768);
        for (size_t k = 0; k < rows.weights.size(); ++k) {
            if (rows.first + k == read) {
                reader.read(line.data());
                ++read;
                for (size_t x = 0; x < kThumbnailWidth; ++x) {
                    uint32_t color[3] = {32768, 32768, 32768};
                    const uint8_t* pixel = &line[3 * across[x].first];
                    for (const uint32_t weight : across[x].weights) {
                        for (size_t c = 0; c < 3; ++c) color[c] += *pixel++ * weight;
                    }
                    for (size_t c = 0; c < 3; ++c) {
                        narrow[3 * x + c] = static_cast<uint8_t>(color[c] >> 16);
                    }
                }
            }
            for (size_t i = 0; i < sums.size(); ++i) sums[i] += narrow[i] * rows.weights[k];
        }
        for (size_t i = 0; i < sums.size(); ++i) line[i] = static_cast<uint8_t>(sums[i] >> 16);
        writer.write(line.data());
    }
    reader.end();
    writer.end();
    return 0;
}
#endif

const std::map<std::string, std::function<int(const char*, const char*)>> kPeers = {
    {"PNG to PPM", copy<PngReader, PpmWriter>},
    {"PNG to 50 % PPM", halved<PngReader, PpmWriter>},
#if defined(VORN_BENCH_JPEG)
    {"JPEG to a JPEG 400 wide", thumbnail},
    {"JPEG to PNG", copy<JpegReader, PngWriter>},
#endif
#if defined(VORN_BENCH_TIFF)
    {"PNG to 50 % TIFF", halved<PngReader, TiffWriter>},
#endif
};

}  // namespace

bool hasConvertPeer(const std::string& name) { return kPeers.count(name) != 0; }

int convertPeer(const std::string& name, const char* in, const char* out) {
    return kPeers.at(name)(in, out);
}

bool writeJpeg([[maybe_unused]] const std::string& file, [[maybe_unused]] const Rgb& picture) {
#if defined(VORN_BENCH_JPEG)
    JpegWriter writer(file.c_str(), picture.width, picture.height, 2);
    for (uint32_t y = 0; y < picture.height; ++y) {
        writer.write(picture.samples.data() + size_t{3} * picture.width * y);
    }
    writer.end();
    return true;
#else
    return false;
#endif
}

}  // namespace vorn_bench
