/* vorn/types.h - the words and records that every other header uses.
 *
 * Conventions of all VORN headers
 * 1. Every function has C linkage. Nothing is thrown across the border.
 * 2. VORN_Bool results are nonzero for success. A pointer result is NULL and a count is 0 on
 * failure. The reason of a failure is an error pair: VORN_H_ImageGetError (vorn/host.h).
 * 3. Strings are NUL-terminated bytes; file names are passed to the operating system as they stand.
 *    Names of modules, colour spaces, keywords and file endings are compared without regard to
 * case.
 * 4. Where the protocol says backslash, the separator of the platform is used ('/' here), and where
 * it gives a longest path, the platform's own longest path counts (4096 bytes here).
 * 5. Every thread has its own library state (errors, default loader, catalogue). One image handle
 * belongs to one thread at a time; VORN_L_ShutDownHandle is the only call that may come from
 * another thread.
 * 6. Records marked "wire" are the same bytes in every build and travel between programs.
 */
#ifndef VORN_TYPES_H
#define VORN_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define VORN_API __declspec(dllexport)
#else
#define VORN_API __attribute__((visibility("default")))
#endif

/* A word of a user tag list: an id (its low 32 bits count) or a value (an integer or a pointer). */
typedef uintptr_t VORN_Word;

/* An 8-bit truth value: 0 is false, anything else true. */
typedef uint8_t VORN_Bool;

/* An error or warning: the code in the low half, the subcode in the high half. */
typedef uint64_t VORN_ErrorPair;

static inline int32_t VORN_ErrorPairCode(VORN_ErrorPair pair) {
    return (int32_t)(uint32_t)(pair & 0xFFFFFFFFu);
}
static inline int32_t VORN_ErrorPairSubcode(VORN_ErrorPair pair) {
    return (int32_t)(uint32_t)(pair >> 32);
}

/* The host's record of one module connection (the "image handle"). Opaque. */
typedef struct VORN_Image VORN_Image;

/* One side's view of the memory that host and module share. Opaque. */
typedef struct SharedStuff SharedStuff;

/* A set of memory blocks that are freed together. Opaque. */
typedef struct VORN_Tracker VORN_Tracker;

/* Head of a tag item (wire). `length` counts the whole item, these 8 bytes included, and is a
 * multiple of 4; length - 8 bytes of data follow. A tag list is items back to back, ended by an
 * item with id TAG_End. */
typedef struct VORN_TagItem {
    uint32_t id;
    uint32_t length;
} VORN_TagItem;

/* Module types: the values of MTAG_ModuleType. */
enum { VORN_LOADER = 1, VORN_SAVER = 2 };

/* Layout codes of data formats. 0 means that steps and places are given explicitly. */
enum {
    DF_Explicit = 0,
    DF_LineInterleaved8 = 1,
    DF_Chunky4x8 = 2,
    DF_Chunky3x8 = 3,
    DF_LineInterleaved16 = 4,
    DF_Chunky4x16 = 5,
    DF_Chunky3x16 = 6
};

/* Colour-space numbers: the values of ITAG_ColorSpace, of capability files and of palettes.
 * "YUV601" is studio-range YCbCr (ITU-R BT.601); "CMAPPED" pixels are indices into a palette. */
enum {
    VORN_CS_NONE = 0,
    VORN_CS_GRAY = 1,
    VORN_CS_RGB = 2,
    VORN_CS_YUV = 3,
    VORN_CS_YUV601 = 4,
    VORN_CS_CMY = 5,
    VORN_CS_CMYK = 6,
    VORN_CS_CMAPPED = 7
};

enum { VORN_MAX_CHANNELS = 8, VORN_MAX_SIZE = 65536 };

/* Bit 0 of a data format's flags: the last channel is an alpha channel. */
enum { VORN_DF_ALPHA = 1 };

/* Data format (wire, 128 bytes): how the pixels of an image, a block of lines or a palette lie in
 * memory. The sample of channel c at column x of line y lies at base + channelPlace[c] + y *
 * lineStep[c] + x * pixelStep[c] Steps are bytes and may be negative. Only the first `channels`
 * entries of the arrays count. 16-bit samples are unsigned, least significant byte first. */
typedef struct VORN_DataFormat {
    int32_t layout;          /* DF_ code */
    int32_t width;           /* pixels in a line */
    int32_t height;          /* lines */
    int32_t channels;        /* 1 to 8, alpha included */
    int32_t bytesPerChannel; /* 1 or 2 */
    uint32_t flags;          /* VORN_DF_ALPHA */
    int32_t pixelStep[VORN_MAX_CHANNELS];
    int32_t lineStep[VORN_MAX_CHANNELS];
    uint32_t
        channelPlace[VORN_MAX_CHANNELS]; /* byte offsets from a base that is given separately */
    uint8_t bitsPerChannel[VORN_MAX_CHANNELS]; /* significant bits; 0 is filled in as all of them */
} VORN_DataFormat;

/* Chunky buffer: the same fields in the same order, with addresses as places. This is how a program
 * describes pixel memory of its own. A NULL place means that the channel is absent: it is skipped
 * by every copy. The record doesn't own the pixels. On 32-bit builds it is the same 128 bytes as
 * the wire record. */
typedef struct VORN_ChunkyBuffer {
    int32_t layout;
    int32_t width;
    int32_t height;
    int32_t channels;
    int32_t bytesPerChannel;
    uint32_t flags;
    int32_t pixelStep[VORN_MAX_CHANNELS];
    int32_t lineStep[VORN_MAX_CHANNELS];
    uint8_t* channelPlace[VORN_MAX_CHANNELS];
    uint8_t bitsPerChannel[VORN_MAX_CHANNELS];
} VORN_ChunkyBuffer;

/* What VORN_H_ImageReadData and VORN_H_ImageWriteData take. `type` must be VORN_BUFFER_CHUNKY. */
enum { VORN_BUFFER_CHUNKY = 1 };
typedef struct VORN_ImageBuffer {
    int32_t type;
    VORN_ChunkyBuffer chunky;
} VORN_ImageBuffer;

/* Palette (wire without its first word): the value of an ITAG_Palette tag in user form. The entries
 * follow the record; the format describes them as one line of `format.width` entries. */
typedef struct VORN_Palette {
    uint32_t byteCount; /* bytes that follow this word: 132 + entry bytes */
    uint32_t colorSpace;
    VORN_DataFormat format;
} VORN_Palette;

/* Value of any other DATA tag in user form: a count and that many bytes behind it. */
typedef struct VORN_DataBlock {
    uint32_t byteCount;
} VORN_DataBlock;

/* Called on the host's thread during a transfer with count = 1, 2, 3, ... */
typedef void (*VORN_MeterCallback)(VORN_Image* image, VORN_Word userData, int32_t count);

/* Called on the host's thread during a transfer; a nonzero answer stops it (error 27). */
typedef int32_t (*VORN_AbortCallback)(VORN_Image* image, VORN_Word userData);

#ifdef __cplusplus
}
#endif

#endif
