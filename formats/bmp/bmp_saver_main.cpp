#include "formats/bmp/bmp_saver.h"

int main(int argc, char** argv) { return formats::runSaver<bmp::BmpSaver>(argc, argv); }
