// Texts that last between runs, kept for the user. A key is a list of names, the outermost first.
// Any text is a name; names that differ only in the case of the letters A to Z are the same.
#pragma once

#include <span>

#include "support/memory.h"

namespace vorn::platform {

using ParameterKey = std::span<const char* const>;

// Replaces the key's text in one step: whatever happens meanwhile, a crash or a full disk, the old
// text or the new one is there, whole; of two programs that store at once one wins. False when the
// old text is still there.
bool storeParameter(ParameterKey key, const char* text);

// False when there is no text that can be read. The text is null when memory is short.
bool fetchParameter(ParameterKey key, Owned<char>& text);

// False when there is still a text.
bool removeParameter(ParameterKey key);

}  // namespace vorn::platform
