#include "config/home_directory.h"

#include <vorn/host.h>

#include <cstdio>
#include <cstring>

#include "platform/environment.h"
#include "platform/path.h"
#include "platform/system_text.h"
#include "support/text.h"
#include "support/thread_state.h"

namespace vorn {
namespace {

using platform::FileKind;
using platform::kMaxPath;
using platform::kSeparator;

constexpr char kVariable[] = "VORN";

// The directory in the words of this thread: the environment's own text is not ours to trim.
struct HomeState {
    char directory[kMaxPath] = "";
};

void trim(char* path) {
    size_t length = std::strlen(path);
    while (length > 0 && path[length - 1] == ' ') {
        --length;
    }
    if (length > 0 && path[length - 1] == kSeparator) {
        --length;
    }
    path[length] = '\0';
}

void showMissing(const char* directory, const char* entry, FileKind kind) {
    constexpr char kText[] =
        "Can't find '%s' %s in VORN directory '%s'.  Consult\n"
        "your user manual for details.";
    char text[sizeof kText + kMaxPath + 32];
    const char* kindText = kind == FileKind::Directory ? "directory" : "file";
    std::snprintf(text, sizeof text, kText, entry, kindText, directory);
    platform::messageBox(0, text, nullptr);
}

bool holdsEverything(const char* directory, bool quiet) {
    static constexpr struct {
        const char* name;
        FileKind kind;
    } kEntries[] = {
        {"Errors", FileKind::File},
        {"Loaders", FileKind::Directory},
        {"Savers", FileKind::Directory},
    };
    for (const auto& entry : kEntries) {
        char path[kMaxPath];
        if (joinPath(path, sizeof path, directory, entry.name) &&
            platform::fileKind(path) == entry.kind) {
            continue;
        }
        if (!quiet) {
            showMissing(directory, entry.name, entry.kind);
        }
        return false;
    }
    return true;
}

// "VORN" beside the directory of the running program.
bool besideProgram(char* out) {
    char path[kMaxPath];
    if (!platform::programPath(path, sizeof path)) {
        return false;
    }
    for (int cut = 0; cut < 2; ++cut) {
        char* separator = std::strrchr(path, kSeparator);
        if (separator == nullptr) {
            return false;
        }
        *separator = '\0';
    }
    return joinPath(out, kMaxPath, path, "VORN") && holdsEverything(out, true);
}

// The first of the drives' candidates that is a directory at all.
bool onDrives(char* out) {
    static constexpr const char* kNames[] = {"VORN", "MOSSGATE/VORN", "OXLEAF/VORN"};
    for (char letter = 'C'; letter <= 'Z'; ++letter) {
        char root[kMaxPath];
        if (!platform::driveRoot(letter, root, sizeof root)) {
            continue;
        }
        for (const char* name : kNames) {
            if (joinPath(out, kMaxPath, root, name) &&
                platform::fileKind(out) == FileKind::Directory) {
                return true;
            }
        }
    }
    return false;
}

bool findCandidate(char* out) {
    if (const char* value = platform::environmentVariable(kVariable)) {
        if (!copyText(out, kMaxPath, value)) {
            return false;
        }
        trim(out);
        return true;
    }
    return besideProgram(out) || onDrives(out);
}

// The text of the environment when it could take the path, else the thread's own copy.
const char* lastingCopy(const char* candidate) {
    const char* published = platform::environmentVariable(kVariable);
    if (published != nullptr && std::strcmp(published, candidate) == 0) {
        return published;
    }
    char* home = threadState<HomeState>().directory;
    copyText(home, kMaxPath, candidate);
    return home;
}

// Where drive C stands: an absolute path, so that no module is ever taken from the directory that
// the host happens to run in.
void fallback(char* out) {
    char root[kMaxPath];
    if (!platform::driveRoot('C', root, sizeof root) || !joinPath(out, kMaxPath, root, "torvex")) {
        joinPath(out, kMaxPath, "", "torvex");
    }
}

}  // namespace
}  // namespace vorn

using namespace vorn;

VORN_Bool VORN_Initialize(const char** directory, VORN_Bool quiet) {
    char candidate[kMaxPath];
    if (!findCandidate(candidate)) {
        if (quiet == 0) {
            platform::messageBox(0,
                                 "Can't find VORN directory.  Reinstall, or set the 'VORN'\n"
                                 "environment variable to point at the VORN directory.\n"
                                 "Consult your user manual for details.",
                                 nullptr);
        }
        return 0;
    }
    if (!holdsEverything(candidate, quiet != 0)) {
        return 0;
    }
    platform::publishVariable(kVariable, candidate);
    if (directory != nullptr) {
        *directory = lastingCopy(candidate);
    }
    return 1;
}

const char* GetHomeDirectory() {
    char* home = threadState<HomeState>().directory;
    const char* value = platform::environmentVariable(kVariable);
    if ((value != nullptr && *value != '\0') || VORN_Initialize(&value, 1) != 0) {
        if (copyText(home, kMaxPath, value)) {
            trim(home);
            return home;
        }
    }
    fallback(home);
    platform::publishVariable(kVariable, home);
    return home;
}
