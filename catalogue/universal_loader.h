// The universal loader: a library of its own that looks at a file and names the loader for it.
#pragma once

#include <vorn/types.h>

#include "platform/path.h"

namespace vorn {

// The function that the library exports as VORN_M_UniversalLoader. It writes a loader's name,
// optionally ended by a line feed, into a buffer of platform::kMaxPath bytes and answers nonzero,
// or zero when it doesn't know the file. The options are 0.
using UniversalLoaderFunction = VORN_Bool (*)(const char* fileName, char* answer, int32_t options);

// Asks it. False when it names no loader, or when there is no such library.
bool askUniversalLoader(const char* fileName, char (&answer)[platform::kMaxPath]);

// Puts a function in the library's place for the calling thread; null brings the library back.
void replaceUniversalLoader(UniversalLoaderFunction function);

}  // namespace vorn
