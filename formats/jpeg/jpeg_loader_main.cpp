#include "formats/jpeg/jpeg_loader.h"

int main(int argc, char** argv) { return formats::runLoader<jpeg::JpegLoader>(argc, argv); }
