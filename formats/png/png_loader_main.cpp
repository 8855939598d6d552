#include "formats/png/png_loader.h"

int main(int argc, char** argv) { return formats::runLoader<png::PngLoader>(argc, argv); }
