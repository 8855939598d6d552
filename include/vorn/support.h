/* vorn/support.h - memory, allocation trackers, buffered files, diagnostics.
 *
 * Memory that the library hands out comes from AllocMemory and is released with FreeMemory, unless
 * the function says otherwise. All functions may be called from any thread; one tracker or file
 * belongs to one thread at a time.
 */
#ifndef VORN_SUPPORT_H
#define VORN_SUPPORT_H

#include <vorn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Flag of AllocMemory and AllocMemoryTracked: the block is filled with zeros. */
enum { MEMORY_Clear = 0x10000 };

/* Allocates `size` bytes, aligned for any type. A size of 0 gives a block that can be freed.
 * NULL when memory is short. */
VORN_API void* AllocMemory(size_t size, uint32_t flags);

/* Releases a block of AllocMemory or AllocString. NULL is ignored. */
VORN_API void FreeMemory(void* block);

/* A new copy of a string, released with FreeMemory. NULL when memory is short. */
VORN_API char* AllocString(const char* text);

/* A tracker owns all blocks allocated through it. NULL when memory is short. */
VORN_API VORN_Tracker* AllocTracker(void);

/* As AllocMemory; the block lives until its tracker is freed. A NULL tracker gives NULL. */
VORN_API void* AllocMemoryTracked(VORN_Tracker* tracker, size_t size, uint32_t flags);

/* Releases the tracker and every block allocated through it. NULL is ignored. */
VORN_API void FreeTracker(VORN_Tracker* tracker);

/* The two names under which modules share the library's allocator. */
VORN_API void* AllocMemFunction(size_t size, uint32_t flags);
VORN_API void FreeMemFunction(void* block);

/* Buffered files. Positions and sizes are 64-bit; one call moves at most 2^31 - 1 bytes. */
typedef struct VORN_File VORN_File;

/* Modes of BOpenFile. */
enum {
    BFILE_Write =
        1, /* a new file that replaces the target as a whole, and only by BCommit (below) */
    BFILE_Read = 2
};

/* Opens a file. NULL on failure; BGetErrorCode then gives the system's error number.
 *
 * BFILE_Write never touches the file at `path`: the bytes go to an unnamed file in the same
 * directory, and BCommit puts it in the place of `path` in one step. Until then, and after BClose
 * without BCommit, after a crash, or when the disk is full, the target is as it was. An existing
 * target keeps its permissions (and its owner, where that is allowed); a symbolic link to a file is
 * followed, one that leads nowhere is replaced; a target that is not a regular file (a device, a
 * pipe), or a file that has no name any more (/proc/PID/fd/N leads to such), is written directly.
 */
VORN_API VORN_File* BOpenFile(const char* path, int32_t mode);

/* Reads or writes up to `count` bytes at the file's position. The result is the number of bytes
 * moved; it is smaller than `count` at the end of the file (BGetErrorCode is 0) or after an error
 * (it is not). */
VORN_API int32_t BRead(VORN_File* file, void* buffer, int32_t count);
VORN_API int32_t BWrite(VORN_File* file, const void* buffer, int32_t count);

/* Moves the position: origin 0 from the start, 1 from the current position. The result is the new
 * position, or a negative value (nothing has moved). */
VORN_API int64_t BSeek(VORN_File* file, int64_t offset, int32_t origin);

/* Size of the file in bytes, what is still in the buffer included. Negative on failure. */
VORN_API int64_t BFileSize(VORN_File* file);

/* Puts a file opened with BFILE_Write in the place of its target. The bytes have reached the file
 * system when this answers true. The file must still be closed. False leaves the target as it was;
 * a file of which a write has failed is never put there. */
VORN_API VORN_Bool BCommit(VORN_File* file);

/* Closes the file and frees it; a written file that was not committed leaves no trace. NULL is
 * ignored. */
VORN_API void BClose(VORN_File* file);

/* The calling thread's last file error: the system's error number (errno), 0 for none. Set by every
 * call above, to 0 by those that succeed. */
VORN_API int32_t BGetErrorCode(void);

/* Memory for what may be larger than the machine's memory: the bytes lie in a temporary file of
 * ScratchFolder, and the system keeps as many of them in memory as it has room for. All of them
 * are zero, and the disk has room for them when this answers. No other program sees the file, and
 * it is gone with the block and with the program, however that ends. NULL on failure (a full disk,
 * a directory that can't be written); BGetErrorCode then gives the system's error number. */
VORN_API void* AllocScratch(size_t size);
VORN_API void FreeScratch(void* block); /* NULL is ignored */

/* The environment variable TMPDIR where it is set, else /var/tmp. */
VORN_API const char* ScratchFolder(void);

/* Diagnostics in printf style. dbprint goes to standard error; dblog goes there only when the
 * environment variable VORN_LOG is set and not empty. */
#if defined(__GNUC__)
#define VORN_PRINTF __attribute__((format(printf, 1, 2)))
#else
#define VORN_PRINTF
#endif
VORN_API void dbprint(const char* format, ...) VORN_PRINTF;
VORN_API void dblog(const char* format, ...) VORN_PRINTF;

/* Which system the library runs on. Exactly one system is believed at a time; "NT" unless the
 * environment variable VORN_SYSTEM says "win16" (16-bit Windows) or "chicago". On 16-bit Windows
 * host and module speak through memory at the same address and waits that spin, elsewhere through
 * objects that the kernel holds. Modules inherit the variable from their host; a program that sets
 * it does so before its first image is opened. */
VORN_API VORN_Bool OSEqualWin162(void);
VORN_API VORN_Bool OSEqualNT2(void);
VORN_API VORN_Bool OSEqualChicago2(void);

#ifdef __cplusplus
}
#endif

#endif
