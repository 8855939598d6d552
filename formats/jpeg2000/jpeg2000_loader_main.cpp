#include "formats/jpeg2000/jpeg2000_loader.h"

int main(int argc, char** argv) { return formats::runLoader<jpeg2000::Jpeg2000Loader>(argc, argv); }
