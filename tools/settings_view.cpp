#include "tools/settings_view.h"

#include <vorn/types.h>

#include <cstdio>

#include "formats/settings/stored_text.h"
#include "tools/avi_preferences.h"
#include "tools/printable.h"
#include "tools/table.h"

namespace vorn::tool {

namespace {

using settings::Setting;
using settings::Value;

std::vector<Value> valuesOf(const ModuleSettings& shown) {
    return settings::valuesIn(shown.stored ? shown.stored->c_str() : nullptr, shown.described);
}

std::string remark(const Setting& setting, const Value& value) {
    if (!value.isValid) {
        return "not valid: " + setting.range();
    }
    return value.isStored ? "default " + setting.standard : "default";
}

Table describedTable(const ModuleSettings& shown) {
    const std::vector<Value> values = valuesOf(shown);
    Table table;
    for (size_t i = 0; i < values.size(); ++i) {
        const Setting& setting = shown.described[i];
        table.addRow({printable(setting.key), printable(values[i].text),
                      printable(remark(setting, values[i])),
                      printable(setting.label) + " (" + printable(setting.range()) + ")"});
    }
    return table;
}

void printOtherText(const std::string& text, const ModuleSettings& shown) {
    if (isAviPreference(text)) {
        Table table;
        for (const auto& [name, value] : aviPreferenceLines(text)) {
            table.addRow({name, printable(value)});
        }
        table.print(stdout, "  ");
        return;
    }
    for (const std::string& line : settings::otherLines(text, shown.described)) {
        std::printf("  also stored: %s\n", printable(line).c_str());
    }
}

Json jsonOf(const Setting& setting, const Value& value) {
    Json json = {{"name", setting.key},         {"value", value.text},
                 {"stored", value.isStored},    {"valid", value.isValid},
                 {"default", setting.standard}, {"label", setting.label}};
    if (setting.kind == Setting::Kind::kNumber) {
        json["least"] = setting.least;
        json["most"] = setting.most;
    } else {
        json["choices"] = setting.choices;
    }
    return json;
}

}  // namespace

const char* typeName(int32_t type) { return type == VORN_LOADER ? "loader" : "saver"; }

void printSettings(const ModuleSettings& shown) {
    const std::string whose =
        shown.application.empty() ? "all applications" : printable(shown.application);
    std::printf("Settings of the %s %s for %s\n", typeName(shown.type),
                printable(shown.module).c_str(), whose.c_str());
    if (shown.described.empty() && !shown.stored) {
        std::printf("  none: nothing is stored, and its capability file describes no settings\n");
    }
    describedTable(shown).print(stdout, "  ");
    if (shown.stored) {
        printOtherText(*shown.stored, shown);
    }
}

Json settingsJson(const ModuleSettings& shown) {
    Json json = {{"module", shown.module}, {"type", typeName(shown.type)}};
    json["application"] = shown.application.empty() ? Json() : Json(shown.application);
    json["settings"] = Json::array();
    const std::vector<Value> values = valuesOf(shown);
    for (size_t i = 0; i < values.size(); ++i) {
        json["settings"].push_back(jsonOf(shown.described[i], values[i]));
    }
    json["stored"] = shown.stored ? Json(*shown.stored) : Json();
    if (shown.stored && isAviPreference(*shown.stored)) {
        json["avi"] = aviPreferenceJson(*shown.stored);
    }
    return json;
}

}  // namespace vorn::tool
