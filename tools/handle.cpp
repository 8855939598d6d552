#include "tools/handle.h"

#include <vorn/library.h>

#include <array>
#include <cerrno>
#include <filesystem>

#include "tools/failure.h"

namespace vorn::tool {

Handle::Handle(const std::string& module,
               int32_t type,
               const std::string& file,
               const Limits& limits)
    : image_(VORN_H_ModuleVaOpen(module.c_str(), type, TAG_End)) {
    if (image_ == nullptr) {
        throw libraryFailure(file, nullptr);
    }
    limits.set(image_);
}

std::optional<int32_t> longTag(VORN_Image* image, unsigned id) {
    int32_t value = 0;
    if (!VORN_H_ImageVaGetTags(image, id, &value, TAG_End)) {
        return std::nullopt;
    }
    return value;
}

std::optional<std::string> textTag(VORN_Image* image, unsigned id) {
    char* copy = nullptr;
    if (!VORN_H_ImageVaGetTags(image, id, &copy, TAG_End) || copy == nullptr) {
        return std::nullopt;
    }
    std::string text = copy;
    VORN_L_TagFreeString(copy);
    return text;
}

const VORN_TagItem* moduleItem(VORN_Image* image, unsigned id) {
    return VORN_L_TagFind(VORN_L_ImageGetTagList(image), id);
}

std::string chooseLoader(const SourceFile& file, const std::string& wanted) {
    // A directory can be opened like a file, and no loader would know it.
    std::error_code ignored;
    if (std::filesystem::is_directory(file.path(), ignored)) {
        throw numberedFailure(file.name(), kErrorOpenFile, EISDIR);
    }
    std::array<char, 4096> name{};
    const char* const asked = wanted.empty() ? nullptr : wanted.c_str();
    if (!VORN_H_ImageGetLoaderName(file.path().c_str(), asked, name.data(),
                                   static_cast<int32_t>(name.size()))) {
        throw libraryFailure(file.name(), nullptr);
    }
    return name.data();
}

}  // namespace vorn::tool
