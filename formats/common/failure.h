// Why a module gives up. Thrown anywhere inside a module; the callbacks of loader.cpp and saver.cpp
// turn it into an error of the host, so no exception leaves a callback.
#pragma once

#include <vorn/module.h>

#include <new>

#include "formats/common/short_memory.h"

namespace formats {

// Error numbers of the shipped modules. Their texts stand in the home directory's file "Errors".
enum : int32_t {
    kNotThisFormat = 2001,  // the file is of another format
    kDamaged = 2002,        // the file breaks its format's rules, or ends too early
    kUnsupported = 2003,    // a variant of the format that the module doesn't know
    kCannotSave = 2004,     // the format can't hold this colour space, depth or channel count
    kNoFileName = 2005,
    kBadOption = 2006,    // a stored setting
    kCancelled = 2007,    // the settings dialog was closed without OK
    kNoDisplay = 2008,    // for the settings dialog
    kDisplayLost = 2009,  // while the settings dialog was open
    kNotStored = 2010,    // settings
    kNoFonts = 2011,      // for the settings dialog
    kNoSuchPage = 2012,
    kNoEncoder = 2013  // the codec library on this machine reads the format only
};

// Error numbers of the library that modules use too.
enum : int32_t {
    kOutOfMemory = 17,
    kCannotOpen = 20,  // subcode: the system's error number
    kSizeOutOfRange = 26,
    kTooWideForBlock = 29,
    kNoSize = 34,
    kNoDialog = 73,
    kCannotWrite = 0x08000025  // 37; subcode: the system's error number
};

struct Failure {
    int32_t code;
    int32_t subcode = 0;
};

// The reason has been noted already, by a VORN_M_ function.
inline constexpr Failure kAlreadyNoted{0};

// Runs the body of a callback. False: it failed, and the reason is noted for the host.
template <class Body>
bool guarded(Body body) {
    memoryWasShort = false;
    try {
        body();
        return true;
    } catch (const Failure& failure) {
        const bool blamed = failure.code == kDamaged || failure.code == kUnsupported;
        if (blamed && memoryWasShort) {
            VORN_M_MemoryIsShort();
            VORN_M_SetErrorCode(kOutOfMemory, 0);
        } else if (failure.code != 0) {
            VORN_M_SetErrorCode(failure.code, failure.subcode);
        }
    } catch (const std::bad_alloc&) {
        VORN_M_SetErrorCode(kOutOfMemory, 0);
    } catch (...) {
        VORN_M_SetErrorCode(memoryWasShort ? int32_t{kOutOfMemory} : kDamaged, 0);
    }
    return false;
}

}  // namespace formats
