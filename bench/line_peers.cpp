#include "line_peers.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

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

using Peers = std::vector<LinePeer>;

// What one writes without any library.
void addPlain(Peers& list, Work work, const LineMemory& m) {
    const auto width = static_cast<size_t>(m.width);
    if (work == Work::Straight) {
        list.push_back({"memcpy", [m, width] { std::memcpy(m.to, m.from, width * 3); }});
    }
    if (work != Work::Palette) return;
    // Colours packed into words; a pixel's fourth byte is overwritten by the next pixel.
    auto colors = std::make_shared<std::array<uint32_t, 256>>();
    for (size_t i = 0; i < 256; ++i) {
        (*colors)[i] = m.palette[i] | m.palette[256 + i] << 8 | m.palette[512 + i] << 16;
    }
    list.push_back({"plain loop", [m, colors, width] {
                        uint8_t* out = m.to;
                        for (size_t x = 0; x + 1 < width; ++x, out += 3) {
                            std::memcpy(out, &(*colors)[m.from[x]], 4);
                        }
                        std::memcpy(out, &(*colors)[m.from[width - 1]], 3);
                    }});
}

#if defined(VORN_BENCH_LIBYUV)
void addLibyuv(Peers& list, Work work, const LineMemory& m) {
    const int w = m.width, p = m.plane();
    const uint8_t* f = m.from;
    uint8_t* t = m.to;
    const auto add = [&](std::function<void()> line) {
        list.push_back({"libyuv", std::move(line)});
    };
    switch (work) {
        case Work::AddAlpha:
            return add([=] { libyuv::RGB24ToARGB(f, 0, t, 0, w, 1); });
        case Work::Swap:
            return add([=] { libyuv::RAWToRGB24(f, 0, t, 0, w, 1); });
        case Work::Split:
            return add([=] { libyuv::SplitRGBPlane(f, 0, t, 0, t + p, 0, t + 2 * p, 0, w, 1); });
        case Work::Merge:
            return add([=] { libyuv::MergeRGBPlane(f, 0, f + p, 0, f + 2 * p, 0, t, 0, w, 1); });
        case Work::Widen:
            return add([=] {
                libyuv::Convert8To16Plane(f, 0, reinterpret_cast<uint16_t*>(t), 0, 65536, 3 * w, 1);
            });
        case Work::Narrow:
            return add([=] {
                libyuv::Convert16To8Plane(reinterpret_cast<const uint16_t*>(f), 0, t, 0, 256, 3 * w,
                                          1);
            });
        case Work::Gray:
            return add([=] { libyuv::RAWToJ400(f, 0, t, 0, w, 1); });
        case Work::RgbToYuv: {
            auto argb = std::make_shared<std::vector<uint8_t>>(static_cast<size_t>(4 * w));
            return add([=] {
                libyuv::RAWToARGB(f, 0, argb->data(), 0, w, 1);
                libyuv::ARGBToI444(argb->data(), 0, t, 0, t + p, 0, t + 2 * p, 0, w, 1);
            });
        }
        case Work::YuvToRgb:
            return add([=] { libyuv::I444ToRAW(f, 0, f + p, 0, f + 2 * p, 0, t, 0, w, 1); });
        default:
            return;
    }
}
#else
void addLibyuv(Peers&, Work, const LineMemory&) {}
#endif

#if defined(VORN_BENCH_ZIMG)
zimg_image_format zimgFormat(int32_t width, bool yuv, int bytes) {
    zimg_image_format f;
    zimg_image_format_default(&f, ZIMG_API_VERSION);
    f.width = static_cast<unsigned>(width);
    f.height = 1;
    f.pixel_type = bytes == 1 ? ZIMG_PIXEL_BYTE : ZIMG_PIXEL_WORD;
    f.color_family = yuv ? ZIMG_COLOR_YUV : ZIMG_COLOR_RGB;
    f.pixel_range = yuv ? ZIMG_RANGE_LIMITED : ZIMG_RANGE_FULL;
    f.matrix_coefficients = yuv ? ZIMG_MATRIX_170M : ZIMG_MATRIX_RGB;
    return f;
}

void addZimg(Peers& list, Work work, const LineMemory& m) {
    if (work != Work::ToYuv && work != Work::FromYuv) return;
    const zimg_image_format in = zimgFormat(m.width, work == Work::FromYuv, 1);
    const zimg_image_format out = zimgFormat(m.width, work == Work::ToYuv, 1);
    zimg_graph_builder_params params;
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    params.cpu_type = ZIMG_CPU_AUTO_64B;
    const std::shared_ptr<zimg_filter_graph> graph(zimg_filter_graph_build(&in, &out, &params),
                                                   zimg_filter_graph_free);
    size_t bytes = 0;
    zimg_filter_graph_get_tmp_size(graph.get(), &bytes);
    const std::shared_ptr<void> space(std::aligned_alloc(64, (bytes / 64 + 1) * 64), std::free);
    zimg_image_buffer_const source{};
    zimg_image_buffer target{};
    source.version = target.version = ZIMG_API_VERSION;
    for (int c = 0; c < 3; ++c) {
        source.plane[c].data = m.from + c * m.plane();
        target.plane[c].data = m.to + c * m.plane();
        source.plane[c].stride = target.plane[c].stride = m.plane();
        source.plane[c].mask = target.plane[c].mask = ZIMG_BUFFER_MAX;
    }
    list.push_back({"zimg", [=] {
                        zimg_filter_graph_process(graph.get(), &source, &target, space.get(),
                                                  nullptr, nullptr, nullptr, nullptr);
                    }});
}
#else
void addZimg(Peers&, Work, const LineMemory&) {}
#endif

#if defined(VORN_BENCH_OPENCV)
void addOpencv(Peers& list, Work work, const LineMemory& m) {
    cv::setNumThreads(1);
    const auto mat = [&](const uint8_t* data, int type, int count) {
        return cv::Mat(1, count, type, const_cast<uint8_t*>(data));
    };
    const auto add = [&](std::function<void()> line) {
        list.push_back({"OpenCV", std::move(line)});
    };
    const auto color = [&](int outType, int code) {
        const cv::Mat in = mat(m.from, CV_8UC3, m.width);
        cv::Mat out = mat(m.to, outType, m.width);
        add([=]() mutable { cv::cvtColor(in, out, code); });
    };
    const auto planes = [&](const uint8_t* data) {
        std::array<cv::Mat, 3> made;
        for (int c = 0; c < 3; ++c)
            made[static_cast<size_t>(c)] = mat(data + c * m.plane(), CV_8U, m.width);
        return made;
    };
    switch (work) {
        case Work::AddAlpha:
            return color(CV_8UC4, cv::COLOR_BGR2BGRA);
        case Work::Swap:
            return color(CV_8UC3, cv::COLOR_BGR2RGB);
        case Work::Gray:
            return color(CV_8U, cv::COLOR_RGB2GRAY);
        case Work::Split:
            return add([in = mat(m.from, CV_8UC3, m.width), out = planes(m.to)]() mutable {
                cv::split(in, out.data());
            });
        case Work::Merge:
            return add([in = planes(m.from), out = mat(m.to, CV_8UC3, m.width)]() mutable {
                cv::merge(in.data(), 3, out);
            });
        case Work::Widen:
            return add([in = mat(m.from, CV_8U, 3 * m.width),
                        out = mat(m.to, CV_16U, 3 * m.width)]() mutable {
                in.convertTo(out, CV_16U, 257);
            });
        default:
            return;
    }
}
#else
void addOpencv(Peers&, Work, const LineMemory&) {}
#endif

}  // namespace

Peers linePeers(Work work, const LineMemory& memory) {
    Peers list;
    addPlain(list, work, memory);
    addLibyuv(list, work, memory);
    addZimg(list, work, memory);
    addOpencv(list, work, memory);
    return list;
}

}  // namespace vorn_bench
