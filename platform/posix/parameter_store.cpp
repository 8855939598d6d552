// One file a text, in the directory "vorn" of the user's configuration directory: the last name of
// a key is a file, those before it are directories.
#include "platform/parameter_store.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "platform/file.h"
#include "platform/path.h"

namespace vorn::platform {
namespace {

constexpr mode_t kPrivateDirectory = 0700;

// No directory has it, as a name's own "." is always written as a number: a key may end where
// others go on.
constexpr char kFileEnding[] = ".txt";

// A path that is put together piece by piece. One that became too long is empty.
class Path {
  public:
    void append(const char* text) {
        while (*text != '\0') append(*text++);
    }

    void append(char letter) {
        if (length_ + 1 < kMaxPath) {
            text_[length_++] = letter;
        } else {
            tooLong_ = true;
        }
    }

    const char* text() {
        text_[tooLong_ ? 0 : length_] = '\0';
        return text_;
    }

    // Makes the directories that the path goes through. One that can't be made is missed when the
    // file is opened.
    void makeDirectories() {
        for (size_t i = 1; i < length_; ++i) {
            if (text_[i] != kSeparator) continue;
            text_[i] = '\0';
            ::mkdir(text_, kPrivateDirectory);
            text_[i] = kSeparator;
        }
    }

  private:
    char text_[kMaxPath];
    size_t length_ = 0;
    bool tooLong_ = false;
};

// Bytes that stand for themselves in file names. Those of other alphabets are left to the file
// system.
bool isPlain(unsigned char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '-' ||
           letter == '_' || letter == ' ' || letter >= 0x80;
}

// Every name gets a file name of its own that is none of "", ".", ".." and holds no separator:
// lower case, other bytes than plain ones as "%2e", nothing at all as "%".
void appendName(Path& path, const char* name) {
    if (*name == '\0') path.append('%');
    for (; *name != '\0'; ++name) {
        auto letter = static_cast<unsigned char>(*name);
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<unsigned char>(letter - 'A' + 'a');
        char number[4];
        std::snprintf(number, sizeof number, "%%%02x", letter);
        if (isPlain(letter)) {
            path.append(static_cast<char>(letter));
        } else {
            path.append(number);
        }
    }
}

// A relative path in the variable would lead to another place from every directory: it counts as
// unset. False when the user has no home.
bool appendConfigDirectory(Path& path) {
    const char* given = std::getenv("XDG_CONFIG_HOME");
    if (given && *given == kSeparator) {
        path.append(given);
        return true;
    }
    const char* home = std::getenv("HOME");
    if (!home || *home != kSeparator) return false;
    path.append(home);
    path.append("/.config");
    return true;
}

bool findPath(ParameterKey key, Path& path) {
    if (!appendConfigDirectory(path)) return false;
    path.append("/vorn");
    for (const char* name : key) {
        path.append(kSeparator);
        appendName(path, name);
    }
    path.append(kFileEnding);
    return *path.text() != '\0';
}

}  // namespace

bool storeParameter(ParameterKey key, const char* text) {
    Path path;
    if (!findPath(key, path)) return false;
    path.makeDirectories();
    File file;
    size_t written = 0;
    return file.openForReplacing(path.text()) == 0 &&
           file.write(text, std::strlen(text), written) == 0 && file.flush() == 0 &&
           file.commit() == 0;
}

bool fetchParameter(ParameterKey key, Owned<char>& text) {
    Path path;
    File file;
    int64_t size = 0;
    if (!findPath(key, path) || file.openForReading(path.text()) != 0 || file.size(size) != 0 ||
        size >= std::numeric_limits<int32_t>::max()) {
        return false;
    }
    text = allocCleared<char>(static_cast<size_t>(size) + 1);
    size_t read = 0;
    return text == nullptr || file.read(text.get(), static_cast<size_t>(size), read) == 0;
}

bool removeParameter(ParameterKey key) {
    Path path;
    return findPath(key, path) &&
           (::unlink(path.text()) == 0 || errno == ENOENT || errno == ENOTDIR);
}

}  // namespace vorn::platform
