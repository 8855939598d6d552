// What can be set for a module: its capability file says so, and the module, the tool and the
// dialog all read it there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace settings {

struct Setting {
    enum class Kind { kChoice, kNumber, kSwitch };

    std::string key;
    Kind kind = Kind::kSwitch;
    std::vector<std::string> choices;  // of a choice; of a switch "false" and "true"
    int32_t least = 0;                 // of a number
    int32_t most = 0;
    std::string standard;  // the value as long as none is stored
    std::string label;     // for people

    // A value as it is stored: names in the description's spelling, numbers in their shortest form,
    // switches as "true" or "false". Nothing when the setting can't have it.
    std::optional<std::string> accepted(std::string_view value) const;

    // All values that it can have, for people.
    std::string range() const;
};

// The settings that the text of a capability file describes, in its order. One that is not
// described as it should be is left out. The text may be null.
std::vector<Setting> describedSettings(const char* capabilities);

// Names are compared without regard to the case of the letters A to Z.
bool sameName(std::string_view a, std::string_view b);

std::string_view trimmed(std::string_view text);

}  // namespace settings
