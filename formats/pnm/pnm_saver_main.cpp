#include "formats/pnm/pnm_saver.h"

int main(int argc, char** argv) { return formats::runSaver<pnm::PnmSaver>(argc, argv); }
