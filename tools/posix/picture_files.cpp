#include "tools/picture_files.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn/support.h>

#include <cerrno>
#include <charconv>
#include <optional>
#include <vector>

#include "tools/failure.h"

namespace vorn::tool {

namespace {

constexpr size_t kPieceBytes = 1 << 20;

// Which of this program's descriptors the name means; "-" means `standard`.
std::optional<int> ownDescriptor(const std::string& name, int standard) {
    if (name == "-") return standard;
    if (name == "/dev/stdin") return STDIN_FILENO;
    if (name == "/dev/stdout") return STDOUT_FILENO;
    for (const std::string directory : {"/dev/fd/", "/proc/self/fd/"}) {
        if (!name.starts_with(directory)) continue;
        int number = -1;
        const char* const end = name.data() + name.size();
        const auto [rest, error] = std::from_chars(name.data() + directory.size(), end, number);
        if (error == std::errc() && rest == end && number >= 0) return number;
    }
    return std::nullopt;
}

// A name for this program's descriptor that other programs of the same user can open.
std::string pathOf(int descriptor) {
    return "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(descriptor);
}

bool isPipe(const std::string& name) {
    struct stat status {};
    return ::stat(name.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

Failure scratchFailure() { return numberedFailure(ScratchFolder(), kErrorCannotWrite, errno); }

Descriptor openScratch() {
    std::string name = std::string(ScratchFolder()) + "/vorn-XXXXXX";
    Descriptor file(::mkostemp(name.data(), O_CLOEXEC));
    if (!file.isOpen()) throw scratchFailure();
    ::unlink(name.c_str());
    return file;
}

Descriptor openPipe(const std::string& name, int mode) {
    Descriptor pipe(::open(name.c_str(), mode | O_CLOEXEC));
    if (!pipe.isOpen()) throw numberedFailure(name, kErrorOpenFile, errno);
    return pipe;
}

bool writeAll(int out, const char* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(out, bytes, count);
        if (written < 0 && errno != EINTR) return false;
        if (written <= 0) continue;
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

// Failures are those of the reading and of the writing side.
template <class ReadFailure, class WriteFailure>
void copy(int in, int out, ReadFailure readFailure, WriteFailure writeFailure) {
    std::vector<char> piece(kPieceBytes);
    for (;;) {
        const ssize_t got = ::read(in, piece.data(), piece.size());
        if (got == 0) return;
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw readFailure();
        if (!writeAll(out, piece.data(), static_cast<size_t>(got))) throw writeFailure();
    }
}

Descriptor copyToScratch(const std::string& name, int in) {
    Descriptor scratch = openScratch();
    copy(
        in, scratch.number(), [&] { return numberedFailure(name, kErrorCannotRead, errno); },
        scratchFailure);
    return scratch;
}

// A file that can be opened again, and then begins where this program has it.
bool isUnreadFile(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
           ::lseek(descriptor, 0, SEEK_CUR) == 0;
}

}  // namespace

void reserveStandardDescriptors() {
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(number, F_GETFD) >= 0) continue;
        // The lowest number that is free is this one.
        ::open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

Descriptor::~Descriptor() {
    if (number_ >= 0) ::close(number_);
}

SourceFile::SourceFile(std::string name) : name_(std::move(name)), path_(name_) {
    const std::optional<int> own = ownDescriptor(name_, STDIN_FILENO);
    if (own && isUnreadFile(*own)) {
        path_ = pathOf(*own);
    } else if (own) {
        copy_ = copyToScratch(name_, *own);
    } else if (isPipe(name_)) {
        copy_ = copyToScratch(name_, openPipe(name_, O_RDONLY).number());
    }
    if (copy_.isOpen()) path_ = pathOf(copy_.number());
}

TargetFile::TargetFile(std::string name) : name_(std::move(name)), path_(name_) {
    own_ = ownDescriptor(name_, STDOUT_FILENO);
    if (own_ && ::isatty(*own_) == 1) {
        throw Failure{name_, "A picture is nothing for a terminal; send it to a file or a program",
                      kErrorCannotSave, 0};
    }
    if (own_ || isPipe(name_)) {
        saved_ = openScratch();
        path_ = pathOf(saved_.number());
    }
}

void TargetFile::deliver() const {
    if (!saved_.isOpen()) return;
    const Descriptor pipe = own_ ? Descriptor() : openPipe(name_, O_WRONLY);
    ::lseek(saved_.number(), 0, SEEK_SET);
    copy(saved_.number(), own_.value_or(pipe.number()), scratchFailure,
         [&] { return numberedFailure(name_, kErrorCannotWrite, errno); });
}

}  // namespace vorn::tool
