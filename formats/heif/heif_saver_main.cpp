#include "formats/heif/heif_saver.h"

int main(int argc, char** argv) { return formats::runSaver<heif::HeifSaver>(argc, argv); }
