#include "formats/jpeg2000/jpeg2000_saver.h"

int main(int argc, char** argv) { return formats::runSaver<jpeg2000::Jpeg2000Saver>(argc, argv); }
