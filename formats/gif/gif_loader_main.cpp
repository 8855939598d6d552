#include "formats/gif/gif_loader.h"

int main(int argc, char** argv) { return formats::runLoader<gif::GifLoader>(argc, argv); }
