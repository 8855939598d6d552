#include "formats/settings/description.h"

#include <vorn/library.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace settings {
namespace {

using Line = std::array<char, PARSE_STRING_SIZE>;

// The value of a keyword, "" when the text doesn't have it.
std::string valueOf(const char* text, const std::string& keyword) {
    Line value{};
    const VORN_ParseEntry table[] = {{keyword.c_str(), PARSE_String, value.data(), 0},
                                     {nullptr, 0, nullptr, 0}};
    VORN_u_ParseGUIResults(text, table);
    return value.data();
}

// Cuts what stands before the next mark off the front of a text.
std::string takePart(std::string_view& text, char mark) {
    const size_t length = std::min(text.find(mark), text.size());
    const std::string part(trimmed(text.substr(0, length)));
    text.remove_prefix(std::min(length + 1, text.size()));
    return part;
}

std::vector<std::string> splitList(std::string_view text) {
    std::vector<std::string> parts;
    while (!text.empty()) parts.push_back(takePart(text, ','));
    return parts;
}

bool parseNumber(std::string_view text, int32_t& number) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc{} && result.ptr == end;
}

// "0-9", "-5-5"
bool parseRange(std::string_view text, Setting& setting) {
    const size_t dash = text.find('-', 1);
    return dash != std::string_view::npos && parseNumber(text.substr(0, dash), setting.least) &&
           parseNumber(text.substr(dash + 1), setting.most) && setting.least <= setting.most;
}

// A name must survive being stored in a line of its own.
bool isName(std::string_view text) {
    return !text.empty() && text.find_first_of("=,#'\"\n\r") == std::string_view::npos;
}

// "choice: one, two: one: A choice", "number: 0-9: 6: A number", "switch: false: A switch"
bool parseSetting(std::string_view text, Setting& setting) {
    const std::string kind = takePart(text, ':');
    bool known = false;
    if (sameName(kind, "choice")) {
        setting.kind = Setting::Kind::kChoice;
        setting.choices = splitList(takePart(text, ':'));
        known = !setting.choices.empty() && std::ranges::all_of(setting.choices, isName);
    } else if (sameName(kind, "number")) {
        setting.kind = Setting::Kind::kNumber;
        known = parseRange(takePart(text, ':'), setting);
    } else if (sameName(kind, "switch")) {
        setting.kind = Setting::Kind::kSwitch;
        setting.choices = {"false", "true"};
        known = true;
    }
    const auto standard = setting.accepted(takePart(text, ':'));
    setting.label = text.empty() ? setting.key : std::string(trimmed(text));
    setting.standard = standard.value_or("");
    return known && standard.has_value();
}

std::optional<std::string> acceptedNumber(const Setting& setting, std::string_view value) {
    int32_t number = 0;
    if (!parseNumber(value, number) || number < setting.least || number > setting.most)
        return std::nullopt;
    return std::to_string(number);
}

}  // namespace

bool sameName(std::string_view a, std::string_view b) {
    const auto lower = [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    };
    return std::ranges::equal(a, b, {}, lower, lower);
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kWhiteSpace = " \t\r\n\v\f";
    text.remove_prefix(std::min(text.find_first_not_of(kWhiteSpace), text.size()));
    return text.substr(0, text.find_last_not_of(kWhiteSpace) + 1);
}

std::optional<std::string> Setting::accepted(std::string_view value) const {
    value = trimmed(value);
    if (kind == Kind::kNumber) return acceptedNumber(*this, value);
    if (kind == Kind::kSwitch) {
        for (const char* word : {"on", "yes"}) value = sameName(value, word) ? "true" : value;
        for (const char* word : {"off", "no"}) value = sameName(value, word) ? "false" : value;
    }
    for (const std::string& choice : choices) {
        if (sameName(value, choice)) return choice;
    }
    return std::nullopt;
}

std::string Setting::range() const {
    if (kind == Kind::kNumber) return std::to_string(least) + " to " + std::to_string(most);
    std::string all;
    for (const std::string& choice : choices) all += (all.empty() ? "" : ", ") + choice;
    return all;
}

std::vector<Setting> describedSettings(const char* capabilities) {
    std::vector<Setting> all;
    for (std::string& key : splitList(valueOf(capabilities, "Settings"))) {
        Setting setting;
        setting.key = std::move(key);
        const auto isThere = [&](const Setting& other) { return sameName(other.key, setting.key); };
        if (isName(setting.key) && std::ranges::none_of(all, isThere) &&
            parseSetting(valueOf(capabilities, "Setting." + setting.key), setting))
            all.push_back(std::move(setting));
    }
    return all;
}

}  // namespace settings
