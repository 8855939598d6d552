#include "formats/tiff/tiff_saver.h"

int main(int argc, char** argv) {
    return formats::runSaver<tiff_format::TiffSaver>(argc, argv, formats::Turning::kNotedInFile);
}
