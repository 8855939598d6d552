#include "tests/conversation/module_home.h"

#include <filesystem>

namespace {

void install(const std::string& name, const char* program) {
    const std::string target = moduleHome().path(name);
    if (std::filesystem::exists(target)) return;
    std::error_code error;
    std::filesystem::create_hard_link(program, target, error);
    if (error) std::filesystem::copy_file(program, target);
}

}  // namespace

ScratchHome& moduleHome() {
    static ScratchHome home;
    return home;
}

void installLoader(const std::string& name) {
    install("Loaders/" + name, name == "loader" ? TEST_LOADER : MISBEHAVE);
}

void installSaver(const std::string& name, const std::string& colorSpaces) {
    install("Savers/" + name, TEST_SAVER);
    moduleHome().write("Savers/" + name + ".cap", "ColorSpaces=" + colorSpaces + "\n");
}

#ifdef INJECTED_LOADER
void installInjected() {
    install("Loaders/injected", INJECTED_LOADER);
    install("Savers/injected", INJECTED_SAVER);
    moduleHome().write("Savers/injected.cap", "ColorSpaces=RGB\n");
}
#endif
