// TGA files.
#include "formats/tga/tga_loader.h"
#include "fuzz/pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    loadPicture<tga::TgaLoader>(data, size);
    return 0;
}
