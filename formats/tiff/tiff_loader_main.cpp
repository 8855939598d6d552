#include "formats/tiff/tiff_loader.h"

int main(int argc, char** argv) { return formats::runLoader<tiff_format::TiffLoader>(argc, argv); }
