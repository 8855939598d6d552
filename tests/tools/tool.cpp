#include "tests/tools/tool.h"

#include <gtest/gtest.h>

#include <algorithm>

Ended vorn(Arguments arguments, const ProgramOptions& options) {
    return run(joined({VORN_TOOL}, arguments), options);
}

void expectDone(const Ended& ended) {
    EXPECT_EQ(ended.status, 0);
    EXPECT_EQ(ended.err, "");
}

void expectFailure(const Ended& ended, const std::string& file, const std::string& numbers) {
    EXPECT_EQ(ended.status, 1);
    const std::string head = "vorn: " + file + ": ";
    const std::string tail = " (" + numbers + ")\n";
    EXPECT_TRUE(ended.err.starts_with(head) && ended.err.ends_with(tail)) << ended.err;
    EXPECT_GT(ended.err.size(), head.size() + tail.size()) << "a reason in words";
    EXPECT_EQ(std::count(ended.err.begin(), ended.err.end(), '\n'), 1) << ended.err;
}

json shownAsJson(Arguments arguments) {
    const Ended ended = vorn(joined(std::move(arguments), {"--json"}));
    expectDone(ended);
    return json::parse(ended.out);
}

std::string anymap(
    const char* kind, int width, int height, int largest, const std::vector<unsigned>& samples) {
    std::string text = std::string(kind) + "\n" + std::to_string(width) + " " +
                       std::to_string(height) + "\n" + std::to_string(largest) + "\n";
    for (const unsigned sample : samples) {
        if (largest > 255) {
            text += static_cast<char>(sample >> 8);
        }
        text += static_cast<char>(sample & 0xFF);
    }
    return text;
}

std::string palettePng() {
    static constexpr unsigned char kBytes[] = {
        0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
        0x44, 0x52, 0x00, 0x00, 0x00, 0x03, 0x00, 0x00, 0x00, 0x02, 0x08, 0x03, 0x00, 0x00,
        0x00, 0xaa, 0xaa, 0x96, 0x28, 0x00, 0x00, 0x00, 0x09, 0x50, 0x4c, 0x54, 0x45, 0xff,
        0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x00, 0xff, 0x2d, 0x4a, 0xcd, 0x8a, 0x00, 0x00,
        0x00, 0x10, 0x49, 0x44, 0x41, 0x54, 0x78, 0xda, 0x63, 0x60, 0x60, 0x64, 0x62, 0x60,
        0x62, 0x64, 0x00, 0x00, 0x00, 0x20, 0x00, 0x07, 0xf5, 0x2a, 0xdf, 0x2f, 0x00, 0x00,
        0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82,
    };
    return {reinterpret_cast<const char*>(kBytes), sizeof kBytes};
}
