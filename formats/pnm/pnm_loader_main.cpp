#include "formats/pnm/pnm_loader.h"

int main(int argc, char** argv) { return formats::runLoader<pnm::PnmLoader>(argc, argv); }
