#include "formats/webp/webp_saver.h"

int main(int argc, char** argv) {
    return formats::runSaver<webp::WebpSaver>(argc, argv, formats::Turning::kNotedInFile);
}
