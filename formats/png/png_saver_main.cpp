#include "formats/png/png_saver.h"

int main(int argc, char** argv) { return formats::runSaver<png::PngSaver>(argc, argv); }
