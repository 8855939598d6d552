// The text in which a module's settings are stored: lines of a key and a value.
#pragma once

#include <string>
#include <vector>

#include "formats/settings/description.h"

namespace settings {

struct Value {
    std::string text;       // in the form of Setting::accepted where it is valid
    bool isStored = false;  // else it is the default
    bool isValid = true;    // what is stored is a value that the setting can have
};

// The values that the settings have when this text is stored, or none (null).
std::vector<Value> valuesIn(const char* text, const std::vector<Setting>& described);

// The text with a setting's line replaced, or added when it has none. All other lines stay; the
// frame rate stands first, because hosts look for it there.
std::string withValue(const std::string& text, const std::string& key, const std::string& value);

// The lines that belong to none of the settings.
std::vector<std::string> otherLines(const std::string& text, const std::vector<Setting>& described);

}  // namespace settings
