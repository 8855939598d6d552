/* vorn/module.h - for programs that are modules: loaders and savers.
 *
 * A module registers callbacks and its protocol version (3) and hands control to the shell:
 *
 *     int main(int argc, char** argv) {
 *         VORN_M_SetVaModuleTags(SHTAG_Version, (VORN_Word)VORN_PROTOCOL_VERSION,
 *                                SHTAG_LoaderOpen, (VORN_Word)openImage,
 *                                SHTAG_LoaderBegin, (VORN_Word)beginImage,
 *                                SHTAG_LoaderRead, (VORN_Word)readImage,
 *                                SHTAG_Close, (VORN_Word)closeImage, SHTAG_End);
 *         VORN_M_ShellMain(argc, argv);
 *         return 0;
 *     }
 *
 * All functions are called on the thread that runs the shell, most of them from inside a callback.
 */
#ifndef VORN_MODULE_H
#define VORN_MODULE_H

#include <vorn/support.h>
#include <vorn/tags.h>
#include <vorn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { VORN_PROTOCOL_VERSION = 3 };

/* Shell tags. Callbacks get no context: a module keeps its state itself. `message` is the host's
 * message, a tag list (ITAG_Filename and so on) that is valid during the call. */
#define SHTAG_End 0u
#define SHTAG_Close \
    1u /* void (void): no image is open any more; may come when none was, and repeatedly */
#define SHTAG_LoaderRead 2u  /* void (void): sends the pixels */
#define SHTAG_LoaderBegin 3u /* int32_t (void): second step of opening, nonzero for success */
#define SHTAG_LoaderOpen \
    4u /* int32_t (const VORN_TagItem* message): first step, nonzero for success */
#define SHTAG_SaverWrite 5u /* int32_t (void): receives the pixels, nonzero for success */
#define SHTAG_SaverBegin 6u /* int32_t (void) */
#define SHTAG_SaverOpen 7u  /* int32_t (const VORN_TagItem* message) */
#define SHTAG_SaverQuery 8u /* void (void): answers the question for the saver's information */
#define SHTAG_Version 9u    /* a number: the protocol version */
#define SHTAG_Command 11u   /* void (const VORN_TagItem* message): module-specific commands */

typedef void (*VORN_CloseCallback)(void);
typedef int32_t (*VORN_StepCallback)(void);
typedef int32_t (*VORN_OpenCallback)(const VORN_TagItem* message);
typedef void (*VORN_CommandCallback)(const VORN_TagItem* message);

/* Store shell tags: (id, value) words ended by SHTAG_End. Unknown ids are skipped; later values
 * replace earlier ones. */
VORN_API VORN_Bool VORN_M_SetModuleTags(uint32_t first, const VORN_Word* rest);
VORN_API VORN_Bool VORN_M_SetVaModuleTags(uint32_t first, ...);

/* Runs the module until the host ends it or is gone. Returns at once when the program was started
 * by hand. Where the host has set limits (VORN_H_ModuleSetLimits), it is told when the program
 * meets one: by a SIGXCPU action and a new-handler, unless the program has its own. From when the
 * host has closed the connection or has ended, the program has one second; if it still runs then,
 * the system ends it (by SIGIO, if the program had no action for that before, and a timer). */
VORN_API void VORN_M_ShellMain(int argc, char** argv);

/* Tells the host, once, that an allocation has failed, when the memory is limited. For the
 * new-handler of a program that has a C++ runtime of its own, which VORN_M_ShellMain doesn't reach;
 * such a handler then throws std::bad_alloc or calls std::set_new_handler(nullptr). */
VORN_API void VORN_M_MemoryIsShort(void);

/* 1 on host threads, 0 on the thread that runs a module's shell. A variable of each thread. The
 * function reads it for languages that can't. */
#if defined(__GNUC__)
extern VORN_API __thread int32_t VORN_a_Parent;
#endif
VORN_API int32_t VORN_M_GetParent(void);

/* ---- Answers
 * -------------------------------------------------------------------------------------------------------
 */

/* Note an error (a warning; the host sees it as an error): it travels with the next acknowledgement
 * or error reply, the last one set wins. */
VORN_API void VORN_M_SetErrorCode(int32_t code, int32_t subcode);
VORN_API void VORN_M_SetWarningCode(int32_t code, int32_t subcode);

/* Tell the host what the image is, once, from the open or begin callback (or the saver's query
 * callback). An ITAG_DataFormat record is completed with VORN_L_DataFormatMacroSetup. 0 when it
 * can't be sent. */
VORN_API VORN_Bool VORN_M_SetImageInfoTags(uint32_t first, const VORN_Word* rest);
VORN_API VORN_Bool VORN_M_SetVaImageInfo(uint32_t first, ...);

/* Answer a module-specific command, once. The command's message is no longer valid afterwards. */
VORN_API VORN_Bool VORN_M_SetCommandReturn(uint32_t first, const VORN_Word* rest);
VORN_API VORN_Bool VORN_M_SetVaCommandReturn(uint32_t first, ...);

/* ---- Sending pixels (loaders)
 * ---------------------------------------------------------------------------------------- */

/* Most data bytes of one block: 98,048 for a loader. */
VORN_API int32_t VORN_M_SendImageDataMaxSize(void);

/* A buffer for as many whole lines as fit into a block: at most `mostLines`, at most 16. When
 * memory is short, half as many are tried, and so on. False: error 17 is noted (also when a single
 * line doesn't fit a block). */
VORN_API VORN_Bool VORN_M_AllocateLoadBuffer(int32_t lineSize,
                                             int32_t mostLines,
                                             void** buffer,
                                             int32_t* lines);
VORN_API void VORN_M_FreeLoadBuffer(void* buffer);

/* Sends a block of whole lines in the data format that was announced. `width` is what the host may
 * look at as ITAG_ReadWidth: pass the image's width. False: the host has stopped the transfer or is
 * gone; stop sending. */
VORN_API VORN_Bool VORN_M_SendImageData(
    int32_t width, int32_t lines, int32_t firstLine, const void* data, int32_t size);

/* The same without a copy: Begin answers where the block's bytes go in the shared area (NULL: stop
 * sending), End sends them. Every Begin that succeeded is followed by one End. */
VORN_API void* VORN_M_SendImageDataBegin(
    int32_t width, int32_t lines, int32_t firstLine, void* unused, int32_t size);
VORN_API VORN_Bool VORN_M_SendImageDataEnd(void);

/* ---- Receiving pixels (savers)
 * ---------------------------------------------------------------------------------------- */

/* The reading position of a saver, made in its write callback. NULL: error 17 is noted. Destroying
 * it takes what the host still sends, so that the host can end. */
typedef struct VORN_ImageDataState VORN_ImageDataState;
VORN_API VORN_ImageDataState* VORN_M_CreateGetImageDataState(void);
VORN_API void VORN_M_DestroyImageDataState(VORN_ImageDataState* state); /* NULL is ignored */

/* Fills the next `buffer->height` lines of the buffer. Fewer lines mean that the host has ended or
 * stopped the data. */
VORN_API int32_t VORN_M_GetImageData(const VORN_ChunkyBuffer* buffer, VORN_ImageDataState* state);

/* Reads the ITAG_Palette of a message into line 0 of a buffer, converted to a colour space; the
 * buffer's width becomes the number of entries. 0: there is none, or channels, sample size or room
 * don't suit. */
VORN_API VORN_Bool VORN_M_GetPalette(const VORN_TagItem* list,
                                     VORN_ChunkyBuffer* buffer,
                                     int32_t colorSpace);

/* ---- Files whose errors go to the host
 * ----------------------------------------------------------------------------------- */

/* As BRead and so on (vorn/support.h), but an error is noted with VORN_M_SetErrorCode. */
VORN_API int32_t VORN_M_BRead(VORN_File* file,
                              void* buffer,
                              int32_t count); /* count, or 0: error 22 or 2 */
VORN_API int32_t VORN_M_BReadNoEOF(VORN_File* file,
                                   void* buffer,
                                   int32_t count); /* bytes read, or 0: error 22 */
VORN_API int32_t VORN_M_BWrite(VORN_File* file,
                               const void* buffer,
                               int32_t count); /* count, or 0: error 37 */
VORN_API int64_t VORN_M_BSeek(VORN_File* file,
                              int64_t offset,
                              int32_t origin); /* position, or -1: error 40 */

/* ---- Settings dialogs
 * -----------------------------------------------------------------------------------------------
 *
 * A module may have a dialog in which the user sets its parameters: a dynamic library beside it,
 * with the module's name and the ending ".dll" (".so" here), that exports one of the two functions
 * below under the given name. It runs in the host's program, on the host's thread, and returns when
 * the dialog is closed; the library is unloaded then. It fetches the present parameters with
 * VORN_H_ModuleGetParameters and stores the new ones with VORN_H_ModuleStoreParameters, or with
 * VORN_H_ModuleStoreOwnParameters for the host's application alone (vorn/host.h); the module
 * fetches them when it opens an image. docs/settings.md tells of a dialog that serves any module.
 */

/* "NewDoInterface". `tags` are the host's words, as it passed them. The result is an error, as the
 * host will see it: code 0 when the dialog was completed. */
typedef VORN_ErrorPair (*VORN_NewDoInterface)(VORN_Word parentWindow, const VORN_Word* tags);

/* "DoInterface", the older form, called when the other isn't there; it always counts as completed.
 * The second argument is 0. */
typedef void (*VORN_DoInterface)(VORN_Word parentWindow, VORN_Word unused);

#ifdef __cplusplus
}
#endif

#endif
