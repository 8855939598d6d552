#include "formats/jxl/jxl_loader.h"
#include "formats/jxl/quiet_library.h"

int main(int argc, char** argv) {
    jxl_format::quietLibrary();
    return formats::runLoader<jxl_format::JxlLoader>(argc, argv);
}
