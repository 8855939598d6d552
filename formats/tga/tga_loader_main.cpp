#include "formats/tga/tga_loader.h"

int main(int argc, char** argv) { return formats::runLoader<tga::TgaLoader>(argc, argv); }
