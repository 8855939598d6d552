// Paths and what lies at them. Names are looked up exactly first and then without regard to case
// (the last part of a path only). Paths are at most kMaxPath - 1 bytes; longer ones don't exist.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vorn::platform {

inline constexpr char kSeparator = '/';
inline constexpr size_t kMaxPath = 4096;

enum class FileKind { Missing, File, Directory };
FileKind fileKind(const char* path);

// Whether the file can be read; otherwise `error` is the system's error number.
bool isReadable(const char* path, int32_t& error);

// Writes the path under which the entry really exists. False when there is none.
bool resolveName(const char* path, char* out, size_t size);

// The same for programs and dynamic libraries that are asked for with the ending of another system:
// x.exe is also found as x, and x.dll as x.so.
bool resolveProgram(const char* path, char* out, size_t size);
bool resolveLibrary(const char* path, char* out, size_t size);

// The running program's own path, and the directory that holds this library. False when it is
// unknown.
bool programPath(char* out, size_t size);
bool libraryDirectory(char* out, size_t size);

// The directory that stands for a drive letter ('C' to 'Z'); false when the letter has none. Tests
// replace the table: an array of 24 roots (null entries have none), or null for the built-in one.
bool driveRoot(char letter, char* out, size_t size);
void replaceDriveRoots(const char* const* roots);

}  // namespace vorn::platform
