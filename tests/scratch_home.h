// Directories and environment variables that last as long as a test.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>

inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class ScratchDirectory {
  public:
    ScratchDirectory()
        : path_(std::filesystem::temp_directory_path() /
                ("vorn-test-" + std::to_string(std::random_device{}()))) {
        std::filesystem::create_directories(path_);
    }
    ~ScratchDirectory() { std::filesystem::remove_all(path_); }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    std::string path(const std::string& name = "") const {
        return name.empty() ? path_.string() : (path_ / name).string();
    }

    // Directories above the file are made too.
    std::string write(const std::string& name, const std::string& text) const {
        std::filesystem::create_directories((path_ / name).parent_path());
        std::ofstream(path_ / name, std::ios::binary) << text;
        return path(name);
    }

    std::string read(const std::string& name) const { return contentOf(path(name)); }

    std::string makeDirectory(const std::string& name) const {
        std::filesystem::create_directories(path_ / name);
        return path(name);
    }

    // A complete home directory with an empty "Errors".
    std::string makeHome(const std::string& name) const {
        for (const char* entry : {"Loaders", "Savers"}) makeDirectory(name + "/" + entry);
        write(name + "/Errors", "");
        return path(name);
    }

    // Brings a program under another name: those of the tests find their orders in it.
    void install(const std::string& name, const std::filesystem::path& program) const {
        if (std::filesystem::exists(path_ / name)) return;
        std::filesystem::create_directories((path_ / name).parent_path());
        std::error_code error;
        std::filesystem::create_hard_link(program, path_ / name, error);
        if (error) std::filesystem::copy_file(program, path_ / name);
    }

    void remove(const std::string& name) const { std::filesystem::remove_all(path_ / name); }

  private:
    std::filesystem::path path_;
};

// Sets a variable, or removes it (nullopt), and puts back what was there.
class ScopedVariable {
  public:
    ScopedVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* present = std::getenv(name)) before_ = present;
        set(value);
    }
    ~ScopedVariable() { set(before_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

    void set(const std::optional<std::string>& value) {
        value ? ::setenv(name_, value->c_str(), 1) : ::unsetenv(name_);
    }

  private:
    const char* name_;
    std::optional<std::string> before_;
};

// A complete home directory, and the variable "VORN" that names it.
class ScratchHome : public ScratchDirectory {
  public:
    ScratchHome() { makeHome("."); }

    ScopedVariable variable{"VORN", path()};
};
