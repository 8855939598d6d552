#include "formats/settings/dialog/own_module.h"

#include <dlfcn.h>
#include <vorn/types.h>

#include <filesystem>

#include "formats/settings/description.h"

namespace settings {

OwnModule ownModule() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<const void*>(&ownModule), &info) == 0) return {};
    const std::filesystem::path file = info.dli_fname;
    const bool isLoader = sameName(file.parent_path().filename().string(), "Loaders");
    return {file.stem().string(), isLoader ? VORN_LOADER : VORN_SAVER};
}

}  // namespace settings
