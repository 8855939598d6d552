#include "tools/capabilities.h"

#include <vorn/library.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>

#include "tools/failure.h"
#include "tools/table.h"

namespace vorn::tool {

namespace {

constexpr std::array kColorSpaceNames = {"None",   "Gray", "RGB",  "YUV",
                                         "YUV601", "CMY",  "CMYK", "CMAPPED"};

std::string lowerCase(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char byte) {
        return static_cast<char>(std::tolower(byte));
    });
    return text;
}

std::vector<std::string> takeList(char** list) {
    std::vector<std::string> strings;
    for (char** entry = list; entry != nullptr && *entry != nullptr; ++entry) {
        strings.emplace_back(*entry);
    }
    VORN_H_FreeStringList(list);
    return strings;
}

// The library's list functions take arrays of C strings.
std::vector<char*> pointers(const std::vector<std::string>& strings) {
    std::vector<char*> list;
    for (const std::string& text : strings) {
        list.push_back(const_cast<char*>(text.c_str()));
    }
    list.push_back(nullptr);
    return list;
}

// What only readers that know it ask for. A format with more than one ending says "Extensions",
// which hosts that only know "Extension" don't see.
void readOwnKeywords(int32_t type, Capabilities& capabilities) {
    std::array<char, PARSE_STRING_SIZE> several{};
    std::array<char, PARSE_STRING_SIZE> one{};
    int32_t reduces = 0;
    const VORN_ParseEntry table[] = {{"Extensions", PARSE_String, several.data(), 0},
                                     {"Extension", PARSE_String, one.data(), 0},
                                     {"Reduces", PARSE_Bool, &reduces, 0},
                                     {nullptr, 0, nullptr, 0}};
    char* const text = VORN_L_GetCapString(capabilities.name.c_str(), type);
    VORN_u_ParseGUIResults(text, table);
    FreeMemory(text);
    std::vector<std::string> extensions =
        takeList(VORN_L_StringToStringList(several[0] != '\0' ? several.data() : one.data()));
    for (std::string& extension : extensions) {
        extension.erase(0, extension.find_first_not_of(" \t."));
        extension.erase(extension.find_last_not_of(" \t\r") + 1);
        extension = lowerCase(std::move(extension));
    }
    capabilities.extensions = std::move(extensions);
    capabilities.reduces = reduces != 0;
}

std::string extensionOf(const std::string& file) {
    return std::filesystem::path(file).extension().string();
}

}  // namespace

bool Capabilities::handlesColorSpace(int32_t colorSpace) const {
    return VORN_L_ColorSpaceInList(colorSpace, pointers(colorSpaces).data());
}

bool Capabilities::handlesDepth(int32_t bits) const {
    // What has 9 to 15 bits is told in samples of 16.
    return VORN_L_CheckDepthLegality(pointers(bitsPerChannel).data(), bits) ||
           (bits == 16 && deepest() > 8);
}

int32_t Capabilities::deepest() const {
    return VORN_L_GetMaxDepth(pointers(bitsPerChannel).data());
}

bool Capabilities::handlesSize(int32_t width, int32_t height) const {
    return VORN_L_CheckSizeLegality(pointers(sizes).data(), width, height);
}

bool Capabilities::handlesExtension(const std::string& extension) const {
    return std::ranges::find(extensions, lowerCase(extension)) != extensions.end();
}

std::string requireHome() {
    const char* directory = nullptr;
    if (!VORN_Initialize(&directory, 0)) {
        throw AlreadyShown{};
    }
    return directory;
}

Capabilities capabilitiesOf(const std::string& name, int32_t type) {
    Capabilities capabilities;
    int32_t alpha = 0, alphaAlways = 0, animation = 0, device = 0, hasFile = 0;
    const char* longName = nullptr;
    char** colorSpaces = nullptr;
    char** sizes = nullptr;
    char** depths = nullptr;
    VORN_H_ImageVaQueryModule(
        name.c_str(), type, MTAG_Alpha, &alpha, MTAG_AlphaAlways, &alphaAlways, MTAG_Animation,
        &animation, MTAG_Device, &device, MTAG_HasCapFile, &hasFile, MTAG_LongModuleName, &longName,
        MTAG_ColorSpaces, &colorSpaces, MTAG_Sizes, &sizes, MTAG_BitsPerChannel, &depths, TAG_End);
    capabilities.name = name;
    capabilities.longName = longName == nullptr ? "" : longName;
    capabilities.colorSpaces = takeList(colorSpaces);
    capabilities.sizes = takeList(sizes);
    capabilities.bitsPerChannel = takeList(depths);
    capabilities.alpha = alpha != 0;
    capabilities.alphaAlways = alphaAlways != 0;
    capabilities.animation = animation != 0;
    capabilities.device = device != 0;
    capabilities.hasFile = hasFile != 0;
    readOwnKeywords(type, capabilities);
    return capabilities;
}

std::string moduleDirectory(int32_t type) {
    const char* directory = nullptr;
    VORN_H_ImageVaQueryModuleHandler(type, MTAG_ModuleDirectory, &directory, TAG_End);
    return directory == nullptr ? "" : directory;
}

std::vector<std::string> installedModules(int32_t type) {
    char** list = nullptr;
    if (!VORN_H_ImageVaQueryModuleHandler(type, MTAG_ModuleList, &list, TAG_End)) {
        throw libraryFailure(moduleDirectory(type), nullptr);
    }
    return takeList(list);
}

void requireInstalled(const std::string& name, int32_t type) {
    const std::vector<std::string> installed = installedModules(type);
    const auto sameName = [&name](const std::string& other) {
        return lowerCase(other) == lowerCase(name);
    };
    if (std::ranges::none_of(installed, sameName)) {
        throw WrongUsage{std::string(type == VORN_LOADER ? "--loader " : "--saver ") + name +
                         ": not installed; there are " + joined(installed, ", ")};
    }
}

std::string saverForFile(const std::string& file) {
    const std::string extension = extensionOf(file);
    for (const std::string& name : installedModules(VORN_SAVER)) {
        if (extension.size() > 1 &&
            capabilitiesOf(name, VORN_SAVER).handlesExtension(extension.substr(1))) {
            return name;
        }
    }
    const std::string reason =
        extension.size() > 1
            ? "No saver is installed for files that end in " + extension
            : std::string("The name has no ending that tells the saver; name one with --saver");
    throw Failure{file, reason, kErrorNoSaver, 0};
}

const char* colorSpaceName(int32_t colorSpace) {
    const bool known =
        colorSpace >= 0 && colorSpace < static_cast<int32_t>(kColorSpaceNames.size());
    return known ? kColorSpaceNames[static_cast<size_t>(colorSpace)] : "unknown";
}

}  // namespace vorn::tool
