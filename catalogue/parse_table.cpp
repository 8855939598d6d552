// The keyword=value parser.
#include <vorn/library.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string_view>

#include "support/text.h"

namespace vorn {
namespace {

constexpr size_t kLongestLine = 299;
constexpr size_t kFloats = 4;

// Cuts the next line, or piece of a long line, off the front of a text that is not empty.
std::string_view takeLine(std::string_view& text) {
    const size_t length = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, std::min(length, kLongestLine));
    text.remove_prefix(line.size());
    if (line.size() == length && !text.empty()) {
        text.remove_prefix(1);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
    }
    return line;
}

// The value of a line that has this keyword.
bool matchLine(std::string_view line, std::string_view keyword, std::string_view& value) {
    if (line.starts_with('#')) {
        return false;
    }
    line.remove_prefix(std::min(line.find_first_not_of('='), line.size()));
    const size_t equals = std::min(line.find('='), line.size());
    if (equals == 0 || !namesEqual(trim(line.substr(0, equals)), trim(keyword))) {
        return false;
    }
    value = line.substr(std::min(equals + 1, line.size()));
    return true;
}

bool findValue(std::string_view text, std::string_view keyword, std::string_view& value) {
    while (!text.empty()) {
        if (matchLine(takeLine(text), keyword, value)) {
            return true;
        }
    }
    return false;
}

void storeQuoted(char* out, std::string_view value, char quote) {
    while (!value.empty() && value.front() != quote) {
        if (value.front() == '\\' && value.size() > 1 && value[1] == quote) {
            value.remove_prefix(1);
        }
        *out++ = value.front();
        value.remove_prefix(1);
    }
    *out = '\0';
}

// A line is shorter than the destination, so every value fits.
void storeString(char* out, std::string_view value) {
    static_assert(kLongestLine < PARSE_STRING_SIZE);
    value = trimFront(value);
    if (value.starts_with('"') || value.starts_with('\'')) {
        storeQuoted(out, value.substr(1), value.front());
    } else {
        out[value.copy(out, kLongestLine)] = '\0';
    }
}

bool takeFloat(std::string_view& text, float& number) {
    std::string_view rest = trimFront(text);
    rest.remove_prefix(rest.starts_with('+') ? 1 : 0);
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (error != std::errc{}) {
        return false;
    }
    text = rest.substr(static_cast<size_t>(end - rest.data()));
    return true;
}

// "(1, 2, 3, 4)"
void storeFloats(void* destination, std::string_view value) {
    for (size_t i = 0; i < kFloats; ++i) {
        float number = 0;
        if (!value.starts_with(i == 0 ? '(' : ',')) {
            return;
        }
        value.remove_prefix(1);
        if (!takeFloat(value, number)) {
            return;
        }
        std::memcpy(static_cast<char*>(destination) + i * sizeof number, &number, sizeof number);
    }
}

void store(const VORN_ParseEntry& entry, std::string_view value) {
    switch (entry.kind) {
        case PARSE_Long:
            *static_cast<int32_t*>(entry.destination) = leadingNumber(value);
            break;
        case PARSE_Bool:
            *static_cast<int32_t*>(entry.destination) = namesEqual(trim(value), "true");
            break;
        case PARSE_String:
            storeString(static_cast<char*>(entry.destination), value);
            break;
        case PARSE_Float4:
            storeFloats(entry.destination, value);
            break;
        default:
            break;
    }
}

void storeDefault(const VORN_ParseEntry& entry) {
    static constexpr float kUnit[kFloats] = {0, 0, 0, 1};
    const auto* given = reinterpret_cast<const void*>(entry.defaultValue);
    switch (entry.kind) {
        case PARSE_Long:
        case PARSE_Bool:
            *static_cast<int32_t*>(entry.destination) = static_cast<int32_t>(entry.defaultValue);
            break;
        case PARSE_String: {
            const std::string_view text = given != nullptr ? static_cast<const char*>(given) : "";
            auto* out = static_cast<char*>(entry.destination);
            out[text.copy(out, PARSE_STRING_SIZE - 1)] = '\0';
            break;
        }
        case PARSE_Float4:
            std::memcpy(entry.destination, given != nullptr ? given : kUnit, sizeof kUnit);
            break;
        default:
            break;
    }
}

}  // namespace
}  // namespace vorn

using namespace vorn;

void VORN_u_ParseGUIResults(const char* text, const VORN_ParseEntry* table) {
    for (const VORN_ParseEntry* entry = table; entry->keyword != nullptr; ++entry) {
        storeDefault(*entry);
    }
    if (text == nullptr) {
        return;
    }
    for (const VORN_ParseEntry* entry = table; entry->keyword != nullptr; ++entry) {
        std::string_view value;
        if (findValue(text, entry->keyword, value)) {
            store(*entry, value);
        }
    }
}
