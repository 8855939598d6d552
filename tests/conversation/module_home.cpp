#include "tests/conversation/module_home.h"

#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

// A module program of this build, or the same one of another build.
fs::path choose(const fs::path& program) {
    const char* others = std::getenv("VORN_TEST_MODULES");
    return others ? others / program.filename() : program;
}

void install(const std::string& name, const char* built) {
    moduleHome().install(name, choose(built));
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
