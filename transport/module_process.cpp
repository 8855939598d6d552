#include "transport/module_process.h"

#include <cctype>
#include <cstdio>
#include <cstring>

#include "config/parameters.h"
#include "errors/error_numbers.h"
#include "platform/limits.h"
#include "platform/path.h"
#include "transport/image.h"
#include "transport/module_limits.h"
#include "transport/os_layer.h"
#include "transport/trace.h"

namespace vorn {
namespace {

constexpr char kProgramEnding[] = ".exe";
constexpr size_t kEndingLength = sizeof kProgramEnding - 1;
constexpr size_t kCommandLineSize = 512;  // 19 tokens of at most 11 characters
constexpr size_t kMaxArguments = 19;

bool endsLikeProgram(const char* name, size_t length) {
    if (length < kEndingLength) return false;
    for (size_t i = 0; i < kEndingLength; ++i) {
        const int c = std::tolower(static_cast<unsigned char>(name[length - kEndingLength + i]));
        if (c != kProgramEnding[i]) return false;
    }
    return true;
}

// The path of the program that really exists, or the protocol's own spelling when none does.
void programFor(const char* moduleFileName, char (&path)[platform::kMaxPath]) {
    const size_t length = std::strlen(moduleFileName);
    const bool complete = endsLikeProgram(moduleFileName, length);
    char name[platform::kMaxPath];
    std::snprintf(name, sizeof name, "%.*s%s",
                  static_cast<int>(sizeof name - sizeof kProgramEnding), moduleFileName,
                  complete ? "" : kProgramEnding);
    if (!platform::resolveProgram(name, path, sizeof path)) std::memcpy(path, name, sizeof name);
}

void commandLine(const SharedStuff& stuff, char (&line)[kCommandLineSize]) {
    const SemaphoreSet& set = *stuff.semaphores;
    size_t used = 0;
    const auto append = [&](const char* format, auto... values) {
        const int written = std::snprintf(line + used, sizeof line - used, format, values...);
        if (written > 0) used += static_cast<size_t>(written);
    };
    append("%d %s ", stuff.shm.handle, stuff.shm.name);
    for (const auto& entry : set.entry) append("%d %s ", entry.handle, entry.name);
    append("%d %d %d %d %d", stuff.writeOffset, stuff.writeSize, stuff.readOffset, stuff.readSize,
           platform::currentThreadId());
}

// Cuts a copy of the line into the program's arguments.
void splitArguments(char* line, char* (&arguments)[kMaxArguments + 1]) {
    size_t count = 0;
    for (char* at = line; at && *at && count < kMaxArguments;) {
        arguments[count++] = at;
        at = std::strchr(at, ' ');
        if (at) *at++ = '\0';
    }
    arguments[count] = nullptr;
}

bool fail(VORN_Image& image, const char* path, const char* line, int32_t systemError) {
    trace("Create process failed er=%d, cmd='%s' cmdline='%s'\n", systemError, path, line);
    VORN_L_SetErrorCode(&image, kErrorStart | kSystemErrorType, systemError);
    image.stuff.linkDown = true;
    return false;
}

}  // namespace

bool ModuleLaunch(VORN_Image& image, const char* moduleFileName) {
    SharedStuff& stuff = image.stuff;
    char path[platform::kMaxPath];
    programFor(moduleFileName, path);
    char line[kCommandLineSize];
    commandLine(stuff, line);
    char words[kCommandLineSize];
    std::memcpy(words, line, sizeof line);
    char* arguments[kMaxArguments + 1];
    splitArguments(words, arguments);

    int32_t inherited[kMostInherited];
    platform::ProcessStart start;
    start.path = path;
    start.arguments = arguments;
    start.inherited = inherited;
    start.inheritedCount = osLayer().inherited(stuff, inherited);
    start.application = applicationName();
    image.limits = limitsFor(image);
    image.limitPosts = 0;
    start.limits = image.limits;
    if (const int32_t error = platform::startProcess(start, image.process))
        return fail(image, path, line, error);

    stuff.semaphores->peerThread = image.process.id;
    stuff.semaphores->watched = image.process.watch;
    image.hasProcess = true;
    if (image.stopped) image.hasProcess = false;
    trace("Create process worked\n");
    return true;
}

// A module tells by posting the spare semaphore that is the host's, see platform/limits.h. On a
// saver's connection it has been posted once at set-up.
bool limitIsMet(VORN_Image& image, int32_t posts) {
    SemaphoreSet& set = *image.stuff.semaphores;
    constexpr int32_t kMostPosts = platform::kTimeLimitPosts + platform::kMemoryLimitPosts + 1;
    while (image.limitPosts < kMostPosts && SemTryWait(set, image.stuff.spareForThisSide))
        ++image.limitPosts;
    const int32_t atSetUp = image.stuff.writeSize == int32_t{kBigAreaSize} ? 1 : 0;
    return image.limitPosts > atSetUp && ((image.limitPosts - atSetUp) & posts) != 0;
}

int32_t reasonOfEnd(VORN_Image& image) {
    const platform::ProcessLimits& limits = image.limits;
    if (limits.cpuSeconds && limitIsMet(image, platform::kTimeLimitPosts)) return kErrorTimeLimit;
    if (limits.addressSpaceBytes && limitIsMet(image, platform::kMemoryLimitPosts))
        return kErrorMemoryLimit;
    return kErrorLink;
}

bool ModuleIsRunning(const VORN_Image& image) { return image.hasProcess; }

}  // namespace vorn
