#include "formats/settings/module_settings.h"

#include <vorn/host.h>

#include <charconv>

namespace settings {

ModuleSettings::ModuleSettings(const char* module, int32_t type, const char* capabilities)
    : described_(describedSettings(capabilities)) {
    char* stored = VORN_H_ModuleGetParameters(module, type);
    values_ = valuesIn(stored, described_);
    VORN_H_ModuleFreeParameters(stored);
    for (size_t i = 0; i < values_.size(); ++i) {
        if (values_[i].isValid) continue;
        dblog("%s: bad setting %s=%s\n", module, described_[i].key.c_str(),
              values_[i].text.c_str());
        throw formats::Failure{formats::kBadOption};
    }
}

const std::string& ModuleSettings::text(const char* key) const {
    for (size_t i = 0; i < described_.size(); ++i) {
        if (sameName(described_[i].key, key)) return values_[i].text;
    }
    throw formats::Failure{formats::kBadOption};
}

int32_t ModuleSettings::number(const char* key) const {
    const std::string& digits = text(key);
    int32_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

}  // namespace settings
