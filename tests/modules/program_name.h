// The name under which a test module is installed: it says what the module shall do. (Its first
// argument is a part of the protocol's command line.)
#pragma once

#include <filesystem>
#include <string>

inline std::string programName() {
    return std::filesystem::read_symlink("/proc/self/exe").filename().string();
}

// What stands behind the last dash of a name like "saver-5", or the other value.
inline int numberInName(const std::string& name, int otherwise) {
    const size_t dash = name.rfind('-');
    return dash == std::string::npos ? otherwise : std::stoi(name.substr(dash + 1));
}
