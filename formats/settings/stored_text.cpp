#include "formats/settings/stored_text.h"

#include <vorn/library.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace settings {
namespace {

constexpr std::string_view kFrameRate = "FrameRate";

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        const size_t length = std::min(text.find('\n'), text.size());
        if (length > 0) lines.emplace_back(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return lines;
}

bool hasKey(std::string_view line, std::string_view key) {
    return sameName(trimmed(line.substr(0, line.find('='))), key);
}

Value valueOf(const Setting& setting, std::string_view stored) {
    stored = trimmed(stored);
    if (stored.empty()) return {setting.standard};
    const auto accepted = setting.accepted(stored);
    return {accepted.value_or(std::string(stored)), true, accepted.has_value()};
}

}  // namespace

std::vector<Value> valuesIn(const char* text, const std::vector<Setting>& described) {
    std::vector<std::array<char, PARSE_STRING_SIZE>> stored(described.size());
    std::vector<VORN_ParseEntry> table;
    for (size_t i = 0; i < described.size(); ++i) {
        table.push_back({described[i].key.c_str(), PARSE_String, stored[i].data(), 0});
    }
    table.push_back({nullptr, 0, nullptr, 0});
    VORN_u_ParseGUIResults(text, table.data());
    std::vector<Value> values;
    for (size_t i = 0; i < described.size(); ++i) {
        values.push_back(valueOf(described[i], stored[i].data()));
    }
    return values;
}

std::string withValue(const std::string& text, const std::string& key, const std::string& value) {
    const std::string line = key + '=' + value;
    std::vector<std::string> lines = linesOf(text);
    const auto isOurs = [&](const std::string& other) { return hasKey(other, key); };
    const auto place = std::ranges::find_if(lines, isOurs);
    if (place == lines.end()) {
        lines.push_back(line);
    } else {
        *place = line;
        lines.erase(std::remove_if(place + 1, lines.end(), isOurs), lines.end());
    }
    std::ranges::stable_partition(
        lines, [](const std::string& other) { return hasKey(other, kFrameRate); });
    std::string all;
    for (const std::string& each : lines) all += each + '\n';
    return all;
}

std::vector<std::string> otherLines(const std::string& text,
                                    const std::vector<Setting>& described) {
    std::vector<std::string> lines = linesOf(text);
    std::erase_if(lines, [&](const std::string& line) {
        return std::ranges::any_of(
            described, [&](const Setting& setting) { return hasKey(line, setting.key); });
    });
    return lines;
}

}  // namespace settings
