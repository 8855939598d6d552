#include "formats/jpeg/jpeg_saver.h"

int main(int argc, char** argv) {
    return formats::runSaver<jpeg::JpegSaver>(argc, argv, formats::Turning::kNotedInFile);
}
