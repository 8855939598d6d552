// The home directory that the conversations use: programs of tests/modules under the names that say
// what they shall do. There is one for the whole test program, because threads keep what they
// found.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/scratch_home.h"

class ModuleHome : public ScratchHome {
  public:
    // Makes the modules that the name asks for, once. Names: "loader" (makes up pictures), "saver",
    // "saver-5" (announces orientation 5), "mute", and the orders of misbehave.
    void installLoader(const std::string& name) {
        install("Loaders/", name, name == "loader" ? TEST_LOADER : MISBEHAVE);
    }
    void installSaver(const std::string& name, const std::string& colorSpaces) {
        const bool good = name.rfind("saver", 0) == 0 || name == "mute";
        install("Savers/", name, good ? TEST_SAVER : MISBEHAVE);
        write("Savers/" + name + ".cap", "ColorSpaces=" + colorSpaces + "\n");
    }

  private:
    void install(const std::string& directory, const std::string& name, const char* program) {
        const std::string target = path(directory + name);
        if (std::filesystem::exists(target)) return;
        std::error_code error;
        std::filesystem::create_hard_link(program, target, error);
        if (error) std::filesystem::copy_file(program, target);
    }
};

// Made on first use; the variable "VORN" names it from then on.
ModuleHome& moduleHome();
