// A picture in memory, and its way in through a loader and out through a saver.
#pragma once

#include <vorn/host.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tools/conversion_plan.h"
#include "tools/fields.h"
#include "tools/interrupts.h"
#include "tools/progress_bar.h"

namespace vorn::tool {

// What sees a transfer while it runs.
struct Onlookers {
    Interrupts& interrupts;
    ProgressBar& progress;
};

class Picture {
  public:
    // Reads from an image that a loader has opened, laid out as planned. The wishes must have been
    // set on the image before it was described. Throws.
    static Picture read(VORN_Image* image,
                        const std::string& file,
                        const ImageDescription& description,
                        const ConversionPlan& plan,
                        Onlookers& onlookers);

    // Writes to a file through a saver's handle. Throws; the file is then as it was before.
    void write(VORN_Image* image,
               const std::string& file,
               const Fields& fields,
               Onlookers& onlookers) const;

  private:
    Picture(const ImageDescription& description, const ConversionPlan& plan);

    VORN_ImageBuffer buffer(int32_t channels) const;
    void copyPalette(VORN_Image* image, const std::string& file);
    void makeOpaque();
    TagWords tags(const Fields& fields) const;

    int32_t width_;
    int32_t height_;
    ConversionPlan plan_;
    std::unique_ptr<uint8_t[]> pixels_;
    std::vector<uint32_t> palette_;  // a VORN_Palette, in words so that it is aligned
};

}  // namespace vorn::tool
