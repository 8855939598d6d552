// A host that goes through a whole conversation with a scripted module, and judges what it got.
#pragma once

#include <string>

#include "tests/lies/streams.h"

struct TalkResult {
    int pictures = 0;     // that were read or written
    int failures = 0;     // calls that ended with an error
    std::string mistake;  // what a host must never do
};

TalkResult talk(Random& random, ScriptedModule& module, const Stream& stream);
