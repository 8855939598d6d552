// Pictures that are saved by one module program and loaded by another.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "tests/formats/format_files.h"
#include "tests/formats/module_host.h"

namespace {

struct Trip {
    const char* saver;
    const char* loader;
    const char* settings;
    int most;  // that a sample of 16 bits may differ: half a step of what the format has. 8 bits: 0
};
const Trip kTrips[] = {{"pnm", "pnm", "", 0},
                       {"png", "png", "", 0},
                       {"tiff", "tiff", "", 0},
                       {"jpeg2000", "jpeg2000", "", 0},
                       {"jxl", "jxl", "Lossless=true", 0},
                       {"avif", "heif", "Lossless=true", 65535 / 4095 / 2 + 1},
                       {"heif", "heif", "Lossless=true", 65535 / 1023 / 2 + 1}};

// The largest difference of two samples.
int furthest(const Pixels& a, const Pixels& b) {
    const auto bytes = static_cast<size_t>(a.buffer.chunky.bytesPerChannel);
    int most = 0;
    for (size_t at = 0; at < a.samples.size(); at += bytes) {
        uint16_t left = 0;
        uint16_t right = 0;
        std::memcpy(&left, &a.samples[at], bytes);
        std::memcpy(&right, &b.samples[at], bytes);
        most = std::max(most, std::abs(left - right));
    }
    return most;
}

TEST_F(Modules, BringBackWhatTheyHaveSaved) {
    const UserSettings user;
    const std::string path = files_.path("a");
    for (const Trip& trip : kTrips) {
        if (!std::filesystem::exists(home() + "/Savers/" + trip.saver + ".cap")) continue;
        user.store(trip.saver, trip.settings);
        const Image saver(trip.saver, VORN_SAVER);
        const Image loader(trip.loader, VORN_LOADER);
        for (int32_t channels = 1; channels <= 4; ++channels) {
            for (int32_t bytes = 1; bytes <= 2; ++bytes) {
                SCOPED_TRACE(trip.saver + std::to_string(channels * 10 + bytes));
                Pixels saved(201, 91, channels, bytes);
                const auto noise = noiseOf(saved.samples.size());
                std::copy(noise.begin(), noise.end(), saved.samples.begin());
                ASSERT_TRUE(save(saver, path, saved, channels < 3 ? VORN_CS_GRAY : VORN_CS_RGB));
                EXPECT_TRUE(saver.close());

                Pixels loaded(201, 91, channels, bytes);
                ASSERT_TRUE(loader.open(path));
                EXPECT_TRUE(VORN_H_ImageVaReadData(loader.get(), &loaded.buffer, TAG_End));
                EXPECT_LE(furthest(saved, loaded), bytes == 1 ? 0 : trip.most);
                EXPECT_TRUE(loader.close());
            }
        }
    }
}

}  // namespace
