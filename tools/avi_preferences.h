// The preference string of the AVI savers, for people and for programs.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/json.h"

namespace vorn::tool {

// Whether a stored text is such a string, valid or not.
bool isAviPreference(const std::string& text);

// Names and values. A string that is not valid stands for the defaults, and the first line says so.
std::vector<std::pair<std::string, std::string>> aviPreferenceLines(const std::string& text);

Json aviPreferenceJson(const std::string& text);

}  // namespace vorn::tool
