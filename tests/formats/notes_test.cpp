// What stands beside the pixels, through the modules: docs/formats.md says what each format keeps.
#include <vorn/library.h>

#include <map>
#include <tuple>

#include "tests/formats/module_host.h"

namespace {

using Texts = std::map<unsigned, std::string>;

const Texts kAllTexts = {{ITAG_Artist, "Andr\xC3\xA9"},
                         {ITAG_DateTime, "2024:05:06 07:08:09"},
                         {ITAG_HostComputer, "a computer"},
                         {ITAG_Description, "\xE7\x8C\xAB, a cat\nasleep"},
                         {ITAG_Make, "maker"},
                         {ITAG_Model, "camera"},
                         {ITAG_Software, "VORN"},
                         {ITAG_DocumentName, "title"},
                         {ITAG_PageName, "one"}};

enum Room { kNone = 0, kDpi = 1, kAspect = 2 };

// The texts are named by their first bytes; "*" are all.
const std::tuple<const char*, const char*, int, std::string> kFormats[] = {
    {"avif", "heif", kDpi, "*"},
    {"bmp", "bmp", kDpi, ""},
    {"gif", "gif", kAspect, "\xE7"},
    {"heif", "heif", kDpi, "*"},
    {"jpeg", "jpeg", kDpi | kAspect, "*"},
    {"jpeg2000", "jpeg2000", kDpi, "*"},
    {"jxl", "jxl", kDpi, "*"},
    {"png", "png", kDpi | kAspect, "*"},
    {"pnm", "pnm", kNone, ""},
    {"tga", "tga", kAspect, "A2\xE7Vt"},
    {"tiff", "tiff", kDpi | kAspect, "*"},
    {"webp", "webp", kDpi, "*"}};

int32_t numberOf(const Image& image, unsigned id) {
    int32_t value = 0;
    VORN_H_ImageVaGetTags(image.get(), id, &value, TAG_End);
    return value;
}

std::string textOf(const Image& image, unsigned id) {
    char* text = nullptr;
    if (!VORN_H_ImageVaGetTags(image.get(), id, &text, TAG_End) || !text) return "";
    const std::string copy = text;
    VORN_L_TagFreeString(text);
    return copy;
}

TEST_F(Modules, KeepWhatTheirFormatHasRoomFor) {
    const ScopedVariable config("XDG_CONFIG_HOME", files_.path("config"));
    for (const auto& [saverName, loaderName, room, texts] : kFormats) {
        if (!std::filesystem::exists(home() + "/Savers/" + saverName + ".cap")) continue;
        SCOPED_TRACE(saverName);
        const std::string path = files_.path("a");
        const Image saver(saverName, VORN_SAVER);
        const Image loader(loaderName, VORN_LOADER);
        const Pixels pixels(16, 8, 3, 1);
        for (const bool dpi : {true, false}) {
            ASSERT_TRUE(saver.open(path) && describe(saver, pixels, VORN_CS_RGB));
            for (const auto& [id, text] : kAllTexts)
                VORN_H_ImageVaSetTags(saver.get(), id, text.c_str(), TAG_End);
            if (dpi)
                VORN_H_ImageVaSetTags(saver.get(), ITAG_XDPI, VORN_Word{300}, ITAG_YDPI,
                                      VORN_Word{150}, TAG_End);
            else
                VORN_H_ImageVaSetTags(saver.get(), ITAG_XAspect, VORN_Word{3}, ITAG_YAspect,
                                      VORN_Word{2}, TAG_End);
            ASSERT_TRUE(VORN_H_ImageVaWriteData(saver.get(), &pixels.buffer, TAG_End));
            saver.close();
            ASSERT_TRUE(loader.open(path));
            EXPECT_EQ(numberOf(loader, ITAG_XDPI), dpi && room & kDpi ? 300 : 0);
            EXPECT_EQ(numberOf(loader, ITAG_YDPI), dpi && room & kDpi ? 150 : 0);
            EXPECT_EQ(numberOf(loader, ITAG_XAspect), !dpi && room & kAspect ? 3 : 0);
            EXPECT_EQ(numberOf(loader, ITAG_YAspect), !dpi && room & kAspect ? 2 : 0);
            for (const auto& [id, text] : kAllTexts) {
                const bool kept = texts == "*" || texts.find(text[0]) != std::string::npos;
                EXPECT_EQ(textOf(loader, id), kept ? text : "");
            }
            loader.close();
        }
    }
}

}  // namespace
