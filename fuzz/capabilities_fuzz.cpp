// The text of a capability file: its keywords, and the lists of names, sizes and depths in its
// values.
#include <vorn/host.h>
#include <vorn/library.h>

#include <cstring>
#include <memory>

#include "fuzz/texts.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = textOf(data, size);
    auto values =
        std::make_unique<char[][PARSE_STRING_SIZE]>(3);  // on the heap, with guarded edges
    int32_t flag = -1;
    int32_t number = -1;
    float places[4];
    const VORN_ParseEntry table[] = {
        {"Alpha", PARSE_Bool, &flag, 0},
        {"Quality", PARSE_Long, &number, 75},
        {"ColorSpaces", PARSE_String, values[0], reinterpret_cast<VORN_Word>("RGB")},
        {"Sizes", PARSE_String, values[1], 0},
        {"BitsPerChannel", PARSE_String, values[2], reinterpret_cast<VORN_Word>("8")},
        {"Crop", PARSE_Float4, places, 0},
        {nullptr, 0, nullptr, 0}};
    VORN_u_ParseGUIResults(text.c_str(), table);
    expect(flag == 0 || flag == 1);
    for (size_t i = 0; i < 3; ++i) expect(std::strlen(values[i]) < PARSE_STRING_SIZE);
    for (size_t i = 0; i < 3; ++i) {
        char** list = VORN_L_StringToStringList(values[i]);
        VORN_L_CheckSizeLegality(list, 640, 480);
        VORN_L_CheckDepthLegality(list, 8);
        VORN_L_GetMaxDepth(list);
        VORN_L_ColorSpaceInList(VORN_CS_RGB, list);
        VORN_H_FreeStringList(list);
    }
    return 0;
}
