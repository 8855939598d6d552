// What `vorn convert` does once its command line is understood.
#pragma once

#include <vorn/host.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tools/interrupts.h"
#include "tools/module_options.h"
#include "tools/picture_files.h"
#include "tools/progress_bar.h"

namespace vorn::tool {

struct ConversionRequest {
    std::string in;
    std::string out;
    std::string loader;  // "": the one that knows the file
    std::string saver;
    std::string colorSpace;
    int32_t depth = 0;
    int32_t orientation = 0;
    int32_t page = 0;  // 0: the first
    std::string size;
    std::string fit;
    std::string scaler;
    std::vector<std::string> settings;
    int32_t mebibytes = 64;  // of memory for a picture that has to be kept whole
    Limits limits;
    bool strict = false;
    bool quiet = false;

    bool isScaled() const { return !size.empty() || !fit.empty(); }
};

// Throws; the file to write is then as it was before.
void convertPicture(const ConversionRequest& request,
                    const SourceFile& in,
                    const TargetFile& out,
                    Interrupts& interrupts,
                    ProgressBar& progress);

}  // namespace vorn::tool
