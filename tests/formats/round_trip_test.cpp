// Pictures that are saved by one module program and loaded by another.
#include <cstring>

#include "tests/formats/module_host.h"

namespace {

TEST_F(Modules, BringBackWhatTheyHaveSaved) {
    const Image saver("pnm", VORN_SAVER);
    const Image loader("pnm", VORN_LOADER);
    const std::string path = files_.path("a.pnm");
    uint32_t noise = 7;
    for (int32_t channels = 1; channels <= 4; ++channels) {
        for (int32_t bytes = 1; bytes <= 2; ++bytes) {
            SCOPED_TRACE(channels * 10 + bytes);
            Pixels saved(301, 203, channels, bytes);
            for (uint8_t& sample : saved.samples)
                sample = static_cast<uint8_t>((noise = noise * 1103515245 + 12345) >> 16);
            ASSERT_TRUE(save(saver, path, saved, channels < 3 ? VORN_CS_GRAY : VORN_CS_RGB));
            EXPECT_TRUE(saver.close());

            Pixels loaded(301, 203, channels, bytes);
            ASSERT_TRUE(loader.open(path));
            EXPECT_TRUE(VORN_H_ImageVaReadData(loader.get(), &loaded.buffer, TAG_End));
            EXPECT_TRUE(loaded.samples == saved.samples);
            EXPECT_TRUE(loader.close());
        }
    }
    EXPECT_FALSE(loader.open(files_.write("b.pnm", "P7 nothing")));
    EXPECT_EQ(loader.error(), 2002);
    EXPECT_FALSE(save(saver, files_.path("no/such/directory"), Pixels(3, 3, 3, 1)));
}

}  // namespace
