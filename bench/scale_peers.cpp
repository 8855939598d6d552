#include "scale_peers.h"

#include <memory>
#include <numeric>

#if defined(VORN_BENCH_LIBYUV)
#include <libyuv.h>
#endif
#if defined(VORN_BENCH_ZIMG)
#include <zimg.h>
#endif
#if defined(VORN_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace vorn_bench {
namespace {

#if defined(VORN_BENCH_LIBYUV)

// Stripes that fit the cache: split into planes, scale each, merge.
struct YuvStripes {
    const Pixels& from;
    Pixels& to;
    libyuv::FilterMode filter;
    int srcStripe, dstStripe;
    std::vector<uint8_t> srcPlanes, dstPlanes;

    YuvStripes(const Pixels& f, Pixels& t, libyuv::FilterMode mode) : from(f), to(t), filter(mode) {
        const int common = std::gcd(f.lines, t.lines);
        const int repeat = std::max(1, 16 * common / std::max(f.lines, t.lines));
        srcStripe = f.lines / common * repeat;
        dstStripe = t.lines / common * repeat;
        srcPlanes.resize(static_cast<size_t>(3 * srcStripe * f.width));
        dstPlanes.resize(static_cast<size_t>(3 * dstStripe * t.width));
    }

    void operator()() {
        const int sw = from.width, dw = to.width;
        uint8_t* s[3];
        uint8_t* d[3];
        for (int c = 0; c < 3; ++c) {
            s[c] = srcPlanes.data() + c * srcStripe * sw;
            d[c] = dstPlanes.data() + c * dstStripe * dw;
        }
        for (int y = 0, out = 0; y < from.lines; y += srcStripe, out += dstStripe) {
            const int in = std::min(srcStripe, from.lines - y);
            const int made = std::min(dstStripe, to.lines - out);
            libyuv::SplitRGBPlane(from.data() + static_cast<size_t>(y) * from.lineBytes(),
                                  static_cast<int>(from.lineBytes()), s[0], sw, s[1], sw, s[2], sw,
                                  sw, in);
            for (int c = 0; c < 3; ++c) {
                libyuv::ScalePlane(s[c], sw, sw, in, d[c], dw, dw, made, filter);
            }
            libyuv::MergeRGBPlane(d[0], dw, d[1], dw, d[2], dw,
                                  to.data() + static_cast<size_t>(out) * to.lineBytes(),
                                  static_cast<int>(to.lineBytes()), dw, made);
        }
    }
};

void addLibyuv(std::vector<Peer>& list, Kind kind, const Pixels& from, Pixels& to) {
    const auto filter = kind == Kind::Nearest  ? libyuv::kFilterNone
                        : kind == Kind::Linear ? libyuv::kFilterBilinear
                                               : libyuv::kFilterBox;
    if (kind == Kind::Cubic) return;
    if (from.bytes == 1) {
        auto stripes = std::make_shared<YuvStripes>(from, to, filter);
        list.push_back({"libyuv", [stripes] { (*stripes)(); }});
        return;
    }
    list.push_back({"libyuv", [&from, &to, filter] {
                        libyuv::ScalePlane_16(reinterpret_cast<const uint16_t*>(from.data()),
                                              static_cast<int>(from.lineBytes() / 2), from.width,
                                              from.lines, reinterpret_cast<uint16_t*>(to.data()),
                                              static_cast<int>(to.lineBytes() / 2), to.width,
                                              to.lines, filter);
                    }});
}
#else
void addLibyuv(std::vector<Peer>&, Kind, const Pixels&, Pixels&) {}
#endif

#if defined(VORN_BENCH_ZIMG) && defined(VORN_BENCH_LIBYUV)

// The filter graph on planes, line by line; interleaved lines are split and merged on the way.
class ZimgGraph {
  public:
    ZimgGraph(Kind kind, const Pixels& from, Pixels& to) : from_(from), to_(to) {
        zimg_image_format in = format(from), out = format(to);
        zimg_graph_builder_params params;
        zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
        params.resample_filter = kind == Kind::Cubic     ? ZIMG_RESIZE_BICUBIC
                                 : kind == Kind::Nearest ? ZIMG_RESIZE_POINT
                                                         : ZIMG_RESIZE_BILINEAR;
        params.filter_param_a = params.filter_param_b = 1.0 / 3;
        params.cpu_type = ZIMG_CPU_AUTO_64B;
        graph_ = zimg_filter_graph_build(&in, &out, &params);
        size_t bytes = 0;
        zimg_filter_graph_get_tmp_size(graph_, &bytes);
        temporary_ = buffer(bytes);
        unsigned lines = 0;
        zimg_filter_graph_get_input_buffering(graph_, &lines);
        input_ = ring(from, lines, inputMemory_);
        zimg_filter_graph_get_output_buffering(graph_, &lines);
        output_ = ring(to, lines, outputMemory_);
    }
    ~ZimgGraph() { zimg_filter_graph_free(graph_); }
    ZimgGraph(const ZimgGraph&) = delete;
    ZimgGraph& operator=(const ZimgGraph&) = delete;

    void operator()() {
        const bool split = from_.channels == 3;
        zimg_image_buffer_const in{};
        in.version = ZIMG_API_VERSION;
        zimg_image_buffer out = split ? output_ : whole(to_);
        const zimg_image_buffer source = split ? input_ : whole(from_);
        for (int c = 0; c < 3; ++c) {
            in.plane[c].data = source.plane[c].data;
            in.plane[c].stride = source.plane[c].stride;
            in.plane[c].mask = source.plane[c].mask;
        }
        zimg_filter_graph_process(graph_, &in, &out, temporary_.get(), split ? unpack : nullptr,
                                  this, split ? pack : nullptr, this);
    }

  private:
    struct FreeAligned {
        void operator()(void* p) const { std::free(p); }
    };
    using Memory = std::unique_ptr<void, FreeAligned>;
    static Memory buffer(size_t bytes) {
        return Memory(std::aligned_alloc(64, (bytes / 64 + 1) * 64));
    }

    static zimg_image_format format(const Pixels& pixels) {
        zimg_image_format f;
        zimg_image_format_default(&f, ZIMG_API_VERSION);
        f.width = static_cast<unsigned>(pixels.width);
        f.height = static_cast<unsigned>(pixels.lines);
        f.pixel_type = pixels.bytes == 1 ? ZIMG_PIXEL_BYTE : ZIMG_PIXEL_WORD;
        f.color_family = pixels.channels == 3 ? ZIMG_COLOR_RGB : ZIMG_COLOR_GREY;
        f.pixel_range = ZIMG_RANGE_FULL;
        f.matrix_coefficients = pixels.channels == 3 ? ZIMG_MATRIX_RGB : ZIMG_MATRIX_709;
        return f;
    }

    static zimg_image_buffer ring(const Pixels& pixels, unsigned lines, Memory& memory) {
        const unsigned mask = zimg_select_buffer_mask(lines);
        const size_t count = mask == ZIMG_BUFFER_MAX ? static_cast<size_t>(pixels.lines) : mask + 1;
        const size_t stride = (static_cast<size_t>(pixels.width * pixels.bytes) + 63) / 64 * 64;
        memory = buffer(3 * count * stride);
        zimg_image_buffer b{};
        b.version = ZIMG_API_VERSION;
        for (size_t c = 0; c < 3; ++c) {
            b.plane[c].data = static_cast<uint8_t*>(memory.get()) + c * count * stride;
            b.plane[c].stride = static_cast<ptrdiff_t>(stride);
            b.plane[c].mask = mask;
        }
        return b;
    }

    static zimg_image_buffer whole(const Pixels& pixels) {
        zimg_image_buffer b{};
        b.version = ZIMG_API_VERSION;
        b.plane[0].data = pixels.data();
        b.plane[0].stride = static_cast<ptrdiff_t>(pixels.lineBytes());
        b.plane[0].mask = ZIMG_BUFFER_MAX;
        return b;
    }

    static uint8_t* line(const zimg_image_buffer& b, int c, unsigned i) {
        return static_cast<uint8_t*>(b.plane[c].data) +
               static_cast<ptrdiff_t>(i & b.plane[c].mask) * b.plane[c].stride;
    }

    static int unpack(void* user, unsigned i, unsigned left, unsigned right) {
        auto& self = *static_cast<ZimgGraph*>(user);
        const int count = static_cast<int>(right - left);
        libyuv::SplitRGBPlane(self.from_.data() + i * self.from_.lineBytes() + left * 3, 0,
                              line(self.input_, 0, i) + left, 0, line(self.input_, 1, i) + left, 0,
                              line(self.input_, 2, i) + left, 0, count, 1);
        return 0;
    }

    static int pack(void* user, unsigned i, unsigned left, unsigned right) {
        auto& self = *static_cast<ZimgGraph*>(user);
        const int count = static_cast<int>(right - left);
        libyuv::MergeRGBPlane(line(self.output_, 0, i) + left, 0, line(self.output_, 1, i) + left,
                              0, line(self.output_, 2, i) + left, 0,
                              self.to_.data() + i * self.to_.lineBytes() + left * 3, 0, count, 1);
        return 0;
    }

    const Pixels& from_;
    Pixels& to_;
    zimg_filter_graph* graph_;
    Memory temporary_, inputMemory_, outputMemory_;
    zimg_image_buffer input_, output_;
};

void addZimg(std::vector<Peer>& list, Kind kind, const Pixels& from, Pixels& to) {
    auto graph = std::make_shared<ZimgGraph>(kind, from, to);
    list.push_back({kind == Kind::Area ? "zimg (linear)" : "zimg", [graph] { (*graph)(); }});
}
#else
void addZimg(std::vector<Peer>&, Kind, const Pixels&, Pixels&) {}
#endif

#if defined(VORN_BENCH_OPENCV)
void addOpencv(std::vector<Peer>& list, Kind kind, const Pixels& from, Pixels& to) {
    cv::setNumThreads(1);
    const int filter = kind == Kind::Area     ? cv::INTER_AREA
                       : kind == Kind::Cubic  ? cv::INTER_CUBIC
                       : kind == Kind::Linear ? cv::INTER_LINEAR
                                              : cv::INTER_NEAREST;
    const int type = CV_MAKETYPE(from.bytes == 1 ? CV_8U : CV_16U, from.channels);
    cv::Mat source(from.lines, from.width, type, from.data(), from.lineBytes());
    cv::Mat target(to.lines, to.width, type, to.data(), to.lineBytes());
    list.push_back({"OpenCV", [source, target, filter]() mutable {
                        cv::resize(source, target, target.size(), 0, 0, filter);
                    }});
}
#else
void addOpencv(std::vector<Peer>&, Kind, const Pixels&, Pixels&) {}
#endif

}  // namespace

std::vector<Peer> peers(Kind kind, const Pixels& from, Pixels& to) {
    std::vector<Peer> list;
    addLibyuv(list, kind, from, to);
    addZimg(list, kind, from, to);
    addOpencv(list, kind, from, to);
    return list;
}

}  // namespace vorn_bench
