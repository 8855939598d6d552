// libjxl, as some systems build it, writes the places in its sources where it gave up to standard
// error: lines that say nothing to a user, who gets the error's own line.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace jxl_format {

// For programs that write nothing there themselves unless VORN_LOG is set.
inline void quietLibrary() {
    if (!std::getenv("VORN_LOG")) (void)!std::freopen("/dev/null", "w", stderr);
}

}  // namespace jxl_format
