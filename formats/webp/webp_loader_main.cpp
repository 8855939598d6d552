#include "formats/webp/webp_loader.h"

int main(int argc, char** argv) { return formats::runLoader<webp::WebpLoader>(argc, argv); }
