// The codec libraries' own programs, where they are installed.
#pragma once

#include <cstdlib>
#include <string>

#include "formats/pnm/pnm_loader.h"
#include "tests/formats/format_files.h"

inline bool hasTool(const char* name) {
    return std::system(("command -v " + std::string(name) + " >/dev/null").c_str()) == 0;
}

inline void run(const std::string& command) {
    EXPECT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
}

// The samples of a PNM file that a tool has written, in the order of this house.
inline std::vector<uint8_t> pnmSamples(const std::string& path) {
    return load<pnm::PnmLoader>(path).samples;
}
