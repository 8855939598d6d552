#include "formats/tga/tga_saver.h"

int main(int argc, char** argv) { return formats::runSaver<tga::TgaSaver>(argc, argv); }
