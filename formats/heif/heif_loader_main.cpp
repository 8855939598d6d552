#include "formats/heif/heif_loader.h"

int main(int argc, char** argv) { return formats::runLoader<heif::HeifLoader>(argc, argv); }
