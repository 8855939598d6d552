// vorn modules: what is installed and what each module can do.

#include <vorn/host.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tools/capabilities.h"
#include "tools/commands.h"
#include "tools/json.h"
#include "tools/printable.h"
#include "tools/table.h"

namespace vorn::tool {

namespace {

std::vector<Capabilities> allCapabilities(int32_t type) {
    std::vector<Capabilities> all;
    for (const std::string& name : installedModules(type)) {
        all.push_back(capabilitiesOf(name, type));
    }
    return all;
}

std::string traits(const Capabilities& module) {
    std::vector<std::string> words;
    if (module.alpha || module.alphaAlways) {
        words.emplace_back(module.alphaAlways ? "always alpha" : "alpha");
    }
    if (module.animation) {
        words.emplace_back("animation");
    }
    if (module.device) {
        words.emplace_back("device");
    }
    if (!module.hasFile) {
        words.emplace_back("no capability file");
    }
    return joined(words, ", ");
}

std::vector<std::string> row(const Capabilities& module) {
    std::vector<std::string> cells = {module.name,
                                      module.longName,
                                      joined(module.extensions, " "),
                                      joined(module.colorSpaces, " "),
                                      joined(module.bitsPerChannel, " ") + " bit",
                                      traits(module)};
    std::ranges::transform(cells, cells.begin(), printable);
    return cells;
}

void printModules(const char* title, int32_t type) {
    std::printf("%s in %s\n", title, printable(moduleDirectory(type)).c_str());
    Table table;
    for (const Capabilities& module : allCapabilities(type)) {
        table.addRow(row(module));
    }
    table.print(stdout, "  ");
}

Json jsonOf(const Capabilities& module) {
    return {{"name", module.name},
            {"longName", module.longName},
            {"extensions", module.extensions},
            {"colorSpaces", module.colorSpaces},
            {"bitsPerChannel", module.bitsPerChannel},
            {"sizes", module.sizes},
            {"alpha", module.alpha},
            {"alphaAlways", module.alphaAlways},
            {"animation", module.animation},
            {"device", module.device},
            {"hasCapabilityFile", module.hasFile}};
}

Json jsonOf(int32_t type) {
    Json modules = Json::array();
    for (const Capabilities& module : allCapabilities(type)) {
        modules.push_back(jsonOf(module));
    }
    return modules;
}

void listModules(bool asJson) {
    const std::string home = requireHome();
    if (asJson) {
        printJson(
            {{"home", home}, {"loaders", jsonOf(VORN_LOADER)}, {"savers", jsonOf(VORN_SAVER)}});
        return;
    }
    printModules("Loaders", VORN_LOADER);
    std::printf("\n");
    printModules("Savers", VORN_SAVER);
}

}  // namespace

void addModulesCommand(CLI::App& program, ExitStatus&) {
    CLI::App* const command =
        program.add_subcommand("modules", "List the installed modules and what each can do");
    const auto asJson = std::make_shared<bool>(false);
    command->add_flag("--json", *asJson, "Write JSON");
    command->callback([asJson] { listModules(*asJson); });
}

}  // namespace vorn::tool
