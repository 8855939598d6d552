// Why a command can't do what it was asked to: thrown by the steps of a command and turned into one
// line on standard error and an exit status.
#pragma once

#include <vorn/types.h>

#include <string>

namespace vorn::tool {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

// Something about a file: exit status 1.
struct Failure {
    std::string file;
    std::string text;
    int32_t code = 0;
    int32_t subcode = 0;
};

// Something about the command line: exit status 2.
struct WrongUsage {
    std::string text;
};

// A failure that the library has shown to the user itself: exit status 1.
struct AlreadyShown {};

// The failure that the library has recorded for the image (or, without one, for this thread).
Failure libraryFailure(const std::string& file, VORN_Image* image);

// A failure with a number of the library and the text that belongs to it.
Failure numberedFailure(const std::string& file, int32_t code, int32_t subcode);

// "vorn: FILE: text (code, subcode)"
void printFailure(const Failure& failure);

// The library's text of an error, without the line end that a system's part may bring.
std::string errorText(int32_t code, int32_t subcode);

// Numbers that the tool itself gives as a reason; the file "Errors" has texts for all of them.
inline constexpr int32_t kErrorProtocol = 5;
inline constexpr int32_t kErrorMemory = 17;
inline constexpr int32_t kErrorOpenFile = 20;
inline constexpr int32_t kErrorAborted = 27;
inline constexpr int32_t kErrorNoDataFormat = 32;
inline constexpr int32_t kErrorCannotRead = 0x08000016;   // subcode: the system's error number
inline constexpr int32_t kErrorCannotWrite = 0x08000025;  // the same
inline constexpr int32_t kErrorCannotSave = 2004;
inline constexpr int32_t kErrorNotStored = 2010;
inline constexpr int32_t kErrorNoSaver = 3001;

}  // namespace vorn::tool
