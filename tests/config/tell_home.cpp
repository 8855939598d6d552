// Tells its home directory, wherever it was copied to.
#include <cstdio>

#include "config/home_directory.h"

int main() { std::printf("%s", GetHomeDirectory()); }
