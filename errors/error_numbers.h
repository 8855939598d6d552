// The error numbers that the library itself sets, without their type bits.
#pragma once

#include <cstdint>

namespace vorn {

enum ErrorNumber : int32_t {
    kErrorNone = 0,
    kErrorEndOfFile = 2,  // a block without lines; a module read past the end of its file
    kErrorLink = 3,  // the shared area could not be taken: the peer has ended or the link is down
    kErrorModuleStopped =
        4,               // the module has said that it stops, or the handle has no program any more
    kErrorProtocol = 5,  // a message that the protocol doesn't allow here
    kErrorShortErrorTag = 6,  // a module's error tag too short to hold a code
    kErrorLoaderNotInstalled = 15,
    kErrorBufferTooSmall = 16,  // a caller's buffer for a name or path
    kErrorMemory = 17,
    kErrorStart = 19,  // type 8
    kErrorOpenFile = 20,
    kErrorRead = 22,  // type 8
    kErrorNoModuleName = 25,
    kErrorSize = 26,      // a width or height outside 1 to 65536
    kErrorAborted = 27,   // by the application's abort callback
    kErrorNoLoader = 28,  // the universal loader gave no answer
    kErrorTooLarge = 29,  // a message or line doesn't fit the shared area
    kErrorModuleType = 30,
    kErrorDataFormat = 31,
    kErrorNoDataFormat = 32,
    kErrorHandleWithoutName = 33,
    kErrorNoSize = 34,
    kErrorWrite = 37,  // type 8
    kErrorSeek = 40,   // type 8
    kErrorOlderModule = 45,
    kErrorNewerModule = 46,
    kErrorListDirectory = 51,
    kErrorNoModules = 52,
    kErrorNoCommands = 53,  // a module-specific command for a module that knows none
    kErrorArgument = 60,
    kErrorNoDialog = 73,
    kErrorTimeLimit = 75,    // the module has met the limit that the host has set
    kErrorMemoryLimit = 76,  // the same
    kErrorNoTags = 1001,
};

// Bits 24 to 27 of a code: the subcode is an operating-system error number.
inline constexpr int32_t kSystemErrorType = 0x08000000;

}  // namespace vorn
