// What a test's dialog library notes, in a record whose address it gets as the parent window.
#pragma once

#include <vorn/types.h>

struct DialogRecord {
    int newCalls = 0;
    int oldCalls = 0;
    int unloads = 0;
    const VORN_Word* tags = nullptr;
    VORN_Word second = 1;
    VORN_ErrorPair answer = 0;
};
