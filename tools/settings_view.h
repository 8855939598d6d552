// What is set for a module, as the tool shows it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "formats/settings/description.h"
#include "tools/json.h"

namespace vorn::tool {

struct ModuleSettings {
    std::string module;
    int32_t type = 0;
    std::string application;                   // "" for the settings that all share
    std::vector<settings::Setting> described;  // by the module's capability file
    std::optional<std::string> stored;         // the text as it is stored
};

void printSettings(const ModuleSettings& shown);
Json settingsJson(const ModuleSettings& shown);

const char* typeName(int32_t type);

}  // namespace vorn::tool
