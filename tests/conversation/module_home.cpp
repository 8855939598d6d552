#include "tests/conversation/module_home.h"

#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

// A module program of this build, or the same one of another build.
void install(const std::string& name, const fs::path& built) {
    const char* others = std::getenv("VORN_TEST_MODULES");
    moduleHome().install(name, others ? others / built.filename() : built);
}

}  // namespace

ScratchHome& moduleHome() {
    static ScratchHome home;
    return home;
}

void installLoader(const std::string& name) { install("Loaders/" + name, TEST_LOADER); }

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
