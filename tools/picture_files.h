// The files that a command is given, as modules can open them. A module opens its file by name,
// maybe more than once, and moves about in it. A pipe can't be had that way, nor a file that only
// this program has open: its standard input and output ("-", /dev/stdin, /dev/stdout) and other
// descriptors (/dev/fd/N, as shells write it for <(command)). Such a picture passes as a whole
// through a file in ScratchFolder that has no name and is gone with this program, however that
// ends.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace vorn::tool {

// Standard input, output and error that this program was started without can't be read and written,
// and no file that is opened later gets their numbers, and with them what is meant for them.
void reserveStandardDescriptors();

// Closes the descriptor at its end.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor();

    int number() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

  private:
    int number_ = -1;
};

class SourceFile {
  public:
    // Reads a pipe to its end. Throws Failure.
    explicit SourceFile(std::string name);

    const std::string& name() const { return name_; }  // as the user gave it
    const std::string& path() const { return path_; }  // for modules

  private:
    std::string name_;
    std::string path_;
    Descriptor copy_;
};

class TargetFile {
  public:
    // Throws Failure; also for a terminal, on which nobody wants to see the bytes of a picture.
    explicit TargetFile(std::string name);

    const std::string& name() const { return name_; }
    const std::string& path() const { return path_; }

    // Sends a picture that has been saved on to the pipe: until then not a byte of it has come out.
    // Throws Failure.
    void deliver() const;

  private:
    std::string name_;
    std::string path_;
    std::optional<int> own_;  // which of this program's descriptors it is
    Descriptor saved_;
};

}  // namespace vorn::tool
