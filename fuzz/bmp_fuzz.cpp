// BMP files.
#include "formats/bmp/bmp_loader.h"
#include "fuzz/pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    loadPicture<bmp::BmpLoader>(data, size);
    return 0;
}
