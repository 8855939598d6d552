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
    const std::string target = moduleHome().path(name);
    if (fs::exists(target)) return;
    const fs::path program = choose(built);
    std::error_code error;
    fs::create_hard_link(program, target, error);
    if (error) fs::copy_file(program, target);
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
    const bool good = name.rfind("saver", 0) == 0 || name == "mute";
    install("Savers/" + name, good ? TEST_SAVER : MISBEHAVE);
    moduleHome().write("Savers/" + name + ".cap", "ColorSpaces=" + colorSpaces + "\n");
}
