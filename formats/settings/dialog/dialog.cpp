// The settings dialog of a module: what the host calls, in the host's own program. Nothing that
// goes wrong here leaves it but as an error number.
#include <vorn/host.h>
#include <vorn/library.h>
#include <vorn/module.h>

#include <memory>
#include <new>
#include <string>

#include "formats/common/failure.h"
#include "formats/settings/dialog/own_module.h"
#include "formats/settings/dialog/settings_window.h"

namespace settings {
namespace {

using formats::Failure;

struct TextDeleter {
    void operator()(char* text) const { FreeMemory(text); }
};
using OwnedText = std::unique_ptr<char, TextDeleter>;

std::vector<Setting> ownSettings(const OwnModule& module) {
    const OwnedText capabilities(VORN_L_GetCapString(module.name.c_str(), module.type));
    std::vector<Setting> described = describedSettings(capabilities.get());
    if (described.empty()) throw Failure{formats::kNoDialog};
    return described;
}

// What the user has not touched stays as it is stored, or not stored.
std::string changedText(std::string text,
                        const std::vector<Setting>& described,
                        const std::vector<Value>& before,
                        const std::vector<std::string>& now) {
    for (size_t i = 0; i < described.size(); ++i) {
        if (now[i] != before[i].text) text = withValue(text, described[i].key, now[i]);
    }
    return text;
}

void showDialog(VORN_Word owner) {
    const OwnModule module = ownModule();
    const std::vector<Setting> described = ownSettings(module);
    const OwnedText stored(VORN_H_ModuleGetParameters(module.name.c_str(), module.type));
    const std::string text = stored != nullptr ? stored.get() : "";
    const std::vector<Value> before = valuesIn(text.c_str(), described);

    const DisplayConnection connection;
    const char* kind = module.type == VORN_LOADER ? "loader" : "saver";
    SettingsWindow window("Settings of the " + module.name + ' ' + kind, described, before);
    const bool accepted = window.run(connection, owner);
    if (connection.isLost()) throw Failure{formats::kDisplayLost};
    if (!accepted) throw Failure{formats::kCancelled};

    const std::string changed = changedText(text, described, before, window.values());
    if (changed != text &&
        !VORN_H_ModuleStoreOwnParameters(module.name.c_str(), module.type, changed.c_str()))
        throw Failure{formats::kNotStored};
}

VORN_ErrorPair pairOf(const Failure& failure) {
    return static_cast<uint32_t>(failure.code) |
           static_cast<VORN_ErrorPair>(static_cast<uint32_t>(failure.subcode)) << 32;
}

}  // namespace
}  // namespace settings

extern "C" VORN_API VORN_ErrorPair NewDoInterface(VORN_Word parentWindow, const VORN_Word*) {
    try {
        settings::showDialog(parentWindow);
        return 0;
    } catch (const formats::Failure& failure) {
        return settings::pairOf(failure);
    } catch (const std::bad_alloc&) {
        return settings::pairOf({formats::kOutOfMemory});
    } catch (...) {
        return settings::pairOf({formats::kNoDisplay});
    }
}
