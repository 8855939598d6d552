// The home directory that the conversations use: programs of tests/modules under the names that say
// what they shall do. There is one for the whole test program, because threads keep what they
// found.
#pragma once

#include <string>

#include "tests/scratch_home.h"

// Made on first use; the variable "VORN" names it from then on.
ScratchHome& moduleHome();

// Make the module that the name asks for, once. Names: "loader" (makes up pictures), "saver...",
// "saver-5" (announces orientation 5), "mute", and the orders of misbehave.
void installLoader(const std::string& name);
void installSaver(const std::string& name, const std::string& colorSpaces);

// Makes the loader and saver "injected", which do one thing at one step (tests/modules/steps.h).
void installInjected();
