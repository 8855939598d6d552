// The settings of a module, as the module itself reads them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats/common/failure.h"
#include "formats/settings/stored_text.h"

namespace settings {

// A choice of a setting and what it means in the module.
template <class Meaning>
struct Choice {
    const char* name;
    Meaning meaning;
};

class ModuleSettings {
  public:
    // The stored settings of the module of this name and type, as its capability file's text
    // describes them. Throws kBadOption when one has a value that it can't have.
    ModuleSettings(const char* module, int32_t type, const char* capabilities);

    // The value of a setting, which must be described. Throws kBadOption when it isn't.
    int32_t number(const char* key) const;
    bool isOn(const char* key) const { return text(key) == "true"; }

    // What the chosen name means: kBadOption when the module doesn't know it.
    template <class Meaning, size_t n>
    Meaning choice(const char* key, const Choice<Meaning> (&choices)[n]) const {
        for (const Choice<Meaning>& choice : choices) {
            if (text(key) == choice.name) return choice.meaning;
        }
        throw formats::Failure{formats::kBadOption};
    }

  private:
    const std::string& text(const char* key) const;

    std::vector<Setting> described_;
    std::vector<Value> values_;
};

}  // namespace settings
