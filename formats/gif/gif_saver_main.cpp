#include "formats/gif/gif_saver.h"

int main(int argc, char** argv) { return formats::runSaver<gif::GifSaver>(argc, argv); }
