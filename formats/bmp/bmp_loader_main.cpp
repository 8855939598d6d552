#include "formats/bmp/bmp_loader.h"

int main(int argc, char** argv) { return formats::runLoader<bmp::BmpLoader>(argc, argv); }
