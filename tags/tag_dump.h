// A diagnostic that prints a tag list, a line an item.
#pragma once

#include <vorn/types.h>

extern "C" void VORN_L_DumpTagList(const VORN_TagItem* list);
