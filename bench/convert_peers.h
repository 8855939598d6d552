// What the tool is compared with: programs that do the same work with the codec libraries alone, in
// one process, with the savers' own settings. They stop at the first error.
#pragma once

#include <string>

#include "png_in_process.h"

namespace vorn_bench {

// Does the work of this name, as far as its libraries were there: a program's exit status.
bool hasConvertPeer(const std::string& name);
int convertPeer(const std::string& name, const char* in, const char* out);

// As cameras do it: every four pixels share their colour. False without the library.
bool writeJpeg(const std::string& file, const Rgb& picture);

}  // namespace vorn_bench
