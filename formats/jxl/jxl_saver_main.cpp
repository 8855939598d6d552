#include "formats/jxl/jxl_saver.h"
#include "formats/jxl/quiet_library.h"

int main(int argc, char** argv) {
    jxl_format::quietLibrary();
    return formats::runSaver<jxl_format::JxlSaver>(argc, argv, formats::Turning::kNotedInFile);
}
