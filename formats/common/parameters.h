// The stored parameters of a module.
#pragma once

#include <vorn/host.h>
#include <vorn/library.h>

namespace formats {

// Fills in what the table asks for (VORN_u_ParseGUIResults), with its defaults where the user has
// stored nothing.
inline void readParameters(const char* module, int32_t type, const VORN_ParseEntry* table) {
    char* stored = VORN_H_ModuleGetParameters(module, type);
    VORN_u_ParseGUIResults(stored, table);
    VORN_H_ModuleFreeParameters(stored);
}

}  // namespace formats
