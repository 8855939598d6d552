#include "platform/path.h"

#include <dirent.h>
#include <dlfcn.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace vorn::platform {
namespace {

bool copyPath(char* out, size_t size, const char* path) {
    const size_t length = std::strlen(path);
    if (length >= size) return false;
    std::memmove(out, path, length + 1);
    return true;
}

bool statusOf(const char* path, struct stat& status) { return ::stat(path, &status) == 0; }

// Replaces the last part of the path (a name that doesn't exist as it is written) by the
// directory's entry that equals it without regard to case.
bool matchLastPart(char* path) {
    char* slash = std::strrchr(path, kSeparator);
    char* name = slash ? slash + 1 : path;
    if (*name == '\0') return false;
    const char first = *name;
    *name = '\0';
    DIR* stream = ::opendir(slash ? path : ".");
    *name = first;
    if (!stream) return false;
    bool found = false;
    while (const dirent* entry = ::readdir(stream)) {
        if (::strcasecmp(entry->d_name, name) != 0) continue;
        std::memcpy(name, entry->d_name, std::strlen(name));  // equal lengths
        found = true;
        break;
    }
    ::closedir(stream);
    return found;
}

// Finds path, or path with its ending replaced.
bool resolveWithEnding(
    const char* path, const char* ending, const char* ownEnding, char* out, size_t size) {
    if (resolveName(path, out, size)) return true;
    const size_t length = std::strlen(path);
    const size_t cut = std::strlen(ending);
    if (length <= cut || ::strcasecmp(path + length - cut, ending) != 0) return false;
    char other[kMaxPath];
    if (length >= sizeof other) return false;  // the own ending is never longer
    std::memcpy(other, path, length - cut);
    std::strcpy(other + length - cut, ownEnding);
    return resolveName(other, out, size);
}

// Roots of C, D, E and so on. C is the directory of this library, so that an installation is found
// under any prefix.
constexpr const char* kRoots[] = {"/usr/local/lib", "/usr/lib", "/opt", "/usr/local", "/usr"};
std::atomic<const char* const*> replacedRoots{nullptr};

}  // namespace

bool resolveName(const char* path, char* out, size_t size) {
    struct stat status {};
    char copy[kMaxPath];
    if (!copyPath(copy, sizeof copy, path)) return false;
    if (!statusOf(copy, status) && !(matchLastPart(copy) && statusOf(copy, status))) return false;
    return copyPath(out, size, copy);
}

bool resolveProgram(const char* path, char* out, size_t size) {
    return resolveWithEnding(path, ".exe", "", out, size);
}

bool resolveLibrary(const char* path, char* out, size_t size) {
    return resolveWithEnding(path, ".dll", ".so", out, size);
}

FileKind fileKind(const char* path) {
    char real[kMaxPath];
    struct stat status {};
    if (!resolveName(path, real, sizeof real) || !statusOf(real, status)) return FileKind::Missing;
    return S_ISDIR(status.st_mode) ? FileKind::Directory : FileKind::File;
}

bool isReadable(const char* path, int32_t& error) {
    error = ::access(path, R_OK) == 0 ? 0 : errno;
    return error == 0;
}

bool programPath(char* out, size_t size) {
    const ssize_t length = ::readlink("/proc/self/exe", out, size);
    if (length <= 0 || static_cast<size_t>(length) >= size) return false;
    out[length] = '\0';
    return true;
}

bool libraryDirectory(char* out, size_t size) {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&libraryDirectory), &info) == 0 || !info.dli_fname)
        return false;
    char real[kMaxPath];
    if (!::realpath(info.dli_fname, real)) return false;
    char* slash = std::strrchr(real, kSeparator);
    if (!slash) return false;
    *slash = '\0';
    return copyPath(out, size, real);
}

bool driveRoot(char letter, char* out, size_t size) {
    if (letter < 'C' || letter > 'Z') return false;
    const auto index = static_cast<size_t>(letter - 'C');
    if (const char* const* roots = replacedRoots.load()) {
        return roots[index] && copyPath(out, size, roots[index]);
    }
    if (index == 0) return libraryDirectory(out, size);
    return index <= std::size(kRoots) && copyPath(out, size, kRoots[index - 1]);
}

void replaceDriveRoots(const char* const* roots) { replacedRoots.store(roots); }

}  // namespace vorn::platform
