// What an installed module can do, as its capability file says. No module is started.
#pragma once

#include <vorn/host.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vorn::tool {

struct Capabilities {
    std::string name;
    std::string longName;
    std::vector<std::string> extensions;
    std::vector<std::string> colorSpaces;
    std::vector<std::string> sizes;
    std::vector<std::string> bitsPerChannel;
    bool alpha = false;
    bool alphaAlways = false;
    bool animation = false;
    bool device = false;
    bool hasFile = false;
    bool reduces = false;  // a loader that heeds ITAG_WantedWidth and ITAG_WantedHeight

    bool handlesColorSpace(int32_t colorSpace) const;
    bool handlesDepth(int32_t bits) const;
    int32_t deepest() const;
    bool handlesSize(int32_t width, int32_t height) const;
    bool handlesExtension(const std::string& extension) const;
};

// The library's home directory, without which there are no modules. Throws AlreadyShown when it
// can't be found.
std::string requireHome();

Capabilities capabilitiesOf(const std::string& name, int32_t type);

std::string moduleDirectory(int32_t type);

// The names of all modules of a type, sorted. Throws the library's failure, named after the
// directory.
std::vector<std::string> installedModules(int32_t type);

// Throws WrongUsage when no module of that name is installed.
void requireInstalled(const std::string& name, int32_t type);

// The saver whose capability file names the ending of the file's name. Throws.
std::string saverForFile(const std::string& file);

const char* colorSpaceName(int32_t colorSpace);

}  // namespace vorn::tool
