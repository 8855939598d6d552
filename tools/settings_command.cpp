// vorn settings: shows and changes what is set for a module.

#include <vorn/host.h>
#include <vorn/library.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "formats/settings/stored_text.h"
#include "tools/capabilities.h"
#include "tools/commands.h"
#include "tools/settings_view.h"
#include "tools/table.h"

namespace vorn::tool {

namespace {

using settings::sameName;
using settings::Setting;

struct Arguments {
    std::string module;
    std::vector<std::string> assignments;
    std::string application;
    bool loader = false;
    bool reset = false;
    bool dialog = false;
    bool json = false;
};

std::optional<std::string> storedText(const ModuleSettings& module) {
    char* text = VORN_H_ModuleGetParameters(module.module.c_str(), module.type);
    std::optional<std::string> stored;
    if (text != nullptr) {
        stored = text;
    }
    VORN_H_ModuleFreeParameters(text);
    return stored;
}

std::vector<Setting> describedFor(const std::string& module, int32_t type) {
    char* text = VORN_L_GetCapString(module.c_str(), type);
    std::vector<Setting> described = settings::describedSettings(text);
    FreeMemory(text);
    return described;
}

// The AVI savers keep their settings under one name, which no module needs to have.
std::string parameterName(const std::string& module) {
    return sameName(module, "AVI16") || sameName(module, "AVI32") ? "AVI" : module;
}

// Settings can outlive their module, and are then shown and removed all the same.
ModuleSettings settingsOf(const Arguments& arguments) {
    ModuleSettings found;
    found.module = parameterName(arguments.module);
    found.type = arguments.loader ? VORN_LOADER : VORN_SAVER;
    found.application = VORN_H_RegisterAppName(arguments.application.c_str());
    found.stored = storedText(found);
    const std::vector<std::string> installed = installedModules(found.type);
    const auto isWanted = [&](const std::string& name) { return sameName(name, arguments.module); };
    const bool isInstalled = std::ranges::any_of(installed, isWanted);
    if (!isInstalled && !found.stored) {
        throw WrongUsage{arguments.module + ": no such " + typeName(found.type) +
                         " is installed; there are " + joined(installed, ", ")};
    }
    found.described = describedFor(arguments.module, found.type);
    return found;
}

const Setting& findSetting(const ModuleSettings& module, const std::string& key) {
    std::vector<std::string> keys;
    for (const Setting& setting : module.described) {
        if (sameName(setting.key, settings::trimmed(key))) {
            return setting;
        }
        keys.push_back(setting.key);
    }
    throw WrongUsage{module.module + " has no setting \"" + key + "\"" +
                     (keys.empty() ? "" : "; there are " + joined(keys, ", "))};
}

std::string withAssignment(const ModuleSettings& module,
                           const std::string& text,
                           const std::string& assignment) {
    const size_t equals = assignment.find('=');
    if (equals == std::string::npos) {
        throw WrongUsage{"\"" + assignment + "\" is not of the form NAME=VALUE"};
    }
    const Setting& setting = findSetting(module, assignment.substr(0, equals));
    const auto value = setting.accepted(assignment.substr(equals + 1));
    if (!value) {
        throw WrongUsage{assignment + ": " + setting.key + " can be " + setting.range()};
    }
    return settings::withValue(text, setting.key, *value);
}

// All assignments are checked before anything is changed.
std::optional<std::string> changedText(const ModuleSettings& module, const Arguments& arguments) {
    std::optional<std::string> text = arguments.reset ? std::nullopt : module.stored;
    for (const std::string& assignment : arguments.assignments) {
        text = withAssignment(module, text.value_or(""), assignment);
    }
    return text;
}

void store(const ModuleSettings& module, const std::optional<std::string>& text) {
    if (!VORN_H_ModuleStoreOwnParameters(module.module.c_str(), module.type,
                                         text ? text->c_str() : nullptr)) {
        throw numberedFailure(module.module, kErrorNotStored, 0);
    }
}

void showDialog(const Arguments& arguments, int32_t type) {
    if (!VORN_H_ImageVaModuleActivateGUI(arguments.module.c_str(), type, MTAG_Quiet, VORN_Word{1},
                                         TAG_End)) {
        throw libraryFailure(arguments.module, nullptr);
    }
}

void settingsCommand(const Arguments& arguments) {
    requireHome();
    ModuleSettings module = settingsOf(arguments);
    const bool changes = arguments.reset || !arguments.assignments.empty();
    if (changes) {
        store(module, changedText(module, arguments));
    }
    if (arguments.dialog) {
        showDialog(arguments, module.type);
    }
    if ((changes || arguments.dialog) && !arguments.json) {
        return;
    }
    module.stored = storedText(module);
    if (arguments.json) {
        printJson(settingsJson(module));
    } else {
        printSettings(module);
    }
}

}  // namespace

void addSettingsCommand(CLI::App& program, ExitStatus&) {
    CLI::App* const command =
        program.add_subcommand("settings", "Show and change what is set for a module");
    const auto arguments = std::make_shared<Arguments>();
    command
        ->add_option("MODULE", arguments->module, "The module: a saver, or with --loader a loader")
        ->required();
    command->add_option("NAME=VALUE", arguments->assignments, "What to set");
    command->add_option(
        "--app", arguments->application,
        "Of this application alone (without it: of all that have none of their own)");
    command->add_flag("--loader", arguments->loader, "The module is a loader");
    command->add_flag("--reset", arguments->reset,
                      "Forget what is stored: the defaults count again, or for an application what "
                      "is set for all");
    command->add_flag("--dialog", arguments->dialog, "Show the module's settings dialog");
    command->add_flag("--json", arguments->json, "Write JSON");
    command->callback([arguments] { settingsCommand(*arguments); });
}

}  // namespace vorn::tool
