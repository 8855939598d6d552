// An open module, closed when the object ends; and its tags as values.
#pragma once

#include <vorn/host.h>

#include <optional>
#include <string>

#include "tools/module_options.h"
#include "tools/picture_files.h"

namespace vorn::tool {

class Handle {
  public:
    // Throws the library's failure, with the name of the file that the module is wanted for.
    Handle(const std::string& module, int32_t type, const std::string& file, const Limits& limits);
    ~Handle() { VORN_H_ModuleClose(image_); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    VORN_Image* get() const { return image_; }

  private:
    VORN_Image* image_;
};

std::optional<int32_t> longTag(VORN_Image* image, unsigned id);
std::optional<std::string> textTag(VORN_Image* image, unsigned id);

// The item itself, as the module sent it; null when there is none.
const VORN_TagItem* moduleItem(VORN_Image* image, unsigned id);

// The loader for a file: the one that was asked for, or the one that knows its contents. Throws.
std::string chooseLoader(const SourceFile& file, const std::string& wanted);

}  // namespace vorn::tool
