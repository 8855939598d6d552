// The home directory that the conversations use: programs of tests/modules under the names that say
// what they shall do. There is one for the whole test program, because threads keep what they
// found.
#pragma once

#include <string>

#include "tests/scratch_home.h"

// Made on first use; the variable "VORN" names it from then on.
ScratchHome& moduleHome();

// Make test_loader or test_saver a module of this name, once. The names of either say more about
// it: "version-2", "saver-5" (announces orientation 5), "mute".
void installLoader(const std::string& name);
void installSaver(const std::string& name, const std::string& colorSpaces);

// Makes the loader and saver "injected", which do one thing at one step (tests/modules/steps.h).
void installInjected();
