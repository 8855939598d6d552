/* vorn/host.h - for programs that load and save images.
 *
 * Reading:  VORN_H_ModuleOpen (a loader), VORN_H_ImageOpen (file name), VORN_H_ImageGetTags (size
 * and so on), VORN_H_ImageReadData (pixels into your memory), VORN_H_ImageClose,
 * VORN_H_ModuleClose. Writing:  VORN_H_ModuleOpen (a saver), VORN_H_ImageOpen (file name),
 * VORN_H_ImageSetTags (size and so on), VORN_H_ImageWriteData, VORN_H_ImageClose,
 * VORN_H_ModuleClose.
 *
 * Between two images of one handle the module program keeps running. All calls that talk to it
 * block until it answers or its program has ended (error 3); there are no time-outs.
 * VORN_L_ShutDownHandle (vorn/library.h) ends a blocked call from another thread.
 *
 * `tags` arguments are user tag lists (vorn/library.h); the Va forms take the same words as
 * arguments:
 *
 *     VORN_H_ImageVaOpen(image, ITAG_Filename, "photo.png", TAG_End);
 */
#ifndef VORN_HOST_H
#define VORN_HOST_H

#include <vorn/support.h>
#include <vorn/tags.h>
#include <vorn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The library
 * --------------------------------------------------------------------------------------------- */

/* Finds, checks and publishes (as environment variable "VORN") the home directory, which must hold
 * the file "Errors" and the directories "Loaders" and "Savers". Searched when the variable is not
 * set: "VORN" beside the directory of the running program, then VORN, MOSSGATE/VORN and OXLEAF/VORN
 * below each of: the directory of this library, /usr/local/lib, /usr/lib, /opt, /usr/local, /usr.
 * `directory` (may be NULL) receives the path; it stays valid. Unless `quiet`, a failure shows a
 * message (standard error, or the handler set with VORN_H_SetMessageHandler). Calling this is
 * optional: it happens on first need, quietly. When the environment can't take the path, the path
 * reported is the calling thread's own copy. */
VORN_API VORN_Bool VORN_Initialize(const char** directory, VORN_Bool quiet);

/* Library version: 1. */
VORN_API int32_t VORN_H_GetVersion(void);

VORN_API VORN_Bool OSEqualChicago(void);
VORN_API VORN_Bool OSEqualNT(void);

/* Replaces what shows message boxes in this process; NULL brings back the default (standard error).
 * The caption may be NULL. The handler may be called from any thread that calls into the library.
 */
typedef void (*VORN_MessageHandler)(VORN_Word parentWindow, const char* text, const char* caption);
VORN_API void VORN_H_SetMessageHandler(VORN_MessageHandler handler);

/* ---- What is installed
 * --------------------------------------------------------------------------------------------- */

/* Questions about all loaders (type 1) or savers (type 2). `tags` are (id, address of the answer)
 * words: MTAG_NumModules       int32_t MTAG_ModuleDirectory  const char*, the thread's own (don't
 * free) MTAG_ModuleList       char**, sorted; free with VORN_H_FreeStringList False for another
 * type, or when the list can't be made (errors 51, 52, 17). */
VORN_API VORN_Bool VORN_H_ImageQueryModuleHandler(int32_t type, const VORN_Word* tags);
VORN_API VORN_Bool VORN_H_ImageVaQueryModuleHandler(int32_t type, ...);

/* Questions about one module, answered from its capability file (or the defaults). Always true.
 *   MTAG_Alpha, MTAG_AlphaAlways, MTAG_Device, MTAG_Animation, MTAG_ModuleIsDLL, MTAG_HasCapFile
 * int32_t MTAG_CapString                                          char*, free with FreeMemory; NULL
 * without a file MTAG_Extension, MTAG_LongModuleName                     const char*, valid until
 * the thread's next question MTAG_ColorSpaces, MTAG_Sizes, MTAG_BitsPerChannel       char**, free
 * with VORN_H_FreeStringList */
VORN_API VORN_Bool VORN_H_ImageQueryModule(const char* name, int32_t type, const VORN_Word* tags);
VORN_API VORN_Bool VORN_H_ImageVaQueryModule(const char* name, int32_t type, ...);

/* Full path of a module, into a buffer. False: no name, a wrong type, or (error 16) it doesn't fit.
 */
VORN_API VORN_Bool VORN_H_ModuleGetName(const char* name, int32_t type, char* buffer, int32_t size);

/* Chooses the loader for a file and copies its name into the buffer. A `loaderName` that is given
 * wins, but NULL,
 * "" and "Unv" ask the universal loader; the thread's default loader is the last resort. False:
 * error 20 (the file can't be read), 28 (no loader knows the file), 15 (the buffer then names the
 * loader that is missing), 16. */
VORN_API VORN_Bool VORN_H_ImageGetLoaderName(const char* fileName,
                                             const char* loaderName,
                                             char* buffer,
                                             int32_t size);
VORN_API VORN_Bool VORN_H_ImageGetSaverName(const char* saverName, int32_t size, char* buffer);

/* Sets the calling thread's default loader (at most 79 characters are kept). "" clears it. */
VORN_API void VORN_H_ImageSetDefaultLoader(const char* name);

/* String lists: arrays of strings ended by NULL. Create copies `count` strings, and fails as a
 * whole (NULL) when memory is short. */
VORN_API char** VORN_H_CreateStringList(const char* const* strings, int32_t count);
VORN_API void VORN_H_FreeStringList(char** list); /* NULL is ignored */

/* ---- Settings of modules
 * ---------------------------------------------------------------------------------------------
 *
 * What a user has set for a module is one text of lines, each typically "Keyword=value" (the module
 * reads it with VORN_u_ParseGUIResults, vorn/library.h). It is kept between runs, for the user, in
 * one file below $XDG_CONFIG_HOME/vorn, or ~/.config/vorn where that variable is not set to an
 * absolute path: savers/png.txt for all applications together, paint/savers/png.txt for the
 * application "Paint". Names of modules and applications are compared without regard to case; any
 * text is a name (bytes that file names should not hold are written as %2e). None of these calls
 * sets an error. A store replaces the text in one step: nobody ever sees, and no crash or full disk
 * ever leaves, half a text; of two programs that store at once, one wins. */

/* Names the application for the calling thread's later calls; "" or NULL takes the name back. At
 * most 79 bytes are kept. The result is the thread's own copy. A module program has the name that
 * the thread had when it started the program (with the first VORN_H_ImageOpen of a handle), so that
 * it reads the application's copy of its settings. */
VORN_API const char* VORN_H_RegisterAppName(const char* name);

/* Stores the parameters of a module (type 2: of a saver; any other: of a loader) for the thread's
 * application, if it has told its name, and for all. True when at least one copy was stored. Line
 * feeds are stored as commas, so a comma inside a value comes back as a line feed. */
VORN_API VORN_Bool VORN_H_ModuleStoreParameters(const char* module, int32_t type, const char* text);

/* The same for one copy alone: the application's where the thread has told its name, else the one
 * for all. NULL as the text removes the copy (true also when there was none); an application
 * without a copy uses the one for all again. */
VORN_API VORN_Bool VORN_H_ModuleStoreOwnParameters(const char* module,
                                                   int32_t type,
                                                   const char* text);

/* The application's copy, else the one for all: a new text, of whatever length, freed with
 * VORN_H_ModuleFreeParameters. NULL: neither was stored, or memory is short. */
VORN_API char* VORN_H_ModuleGetParameters(const char* module, int32_t type);
VORN_API void VORN_H_ModuleFreeParameters(char* text); /* NULL is ignored */

/* Frames per second that a saver of animations will write: the number behind "FrameRate=", where
 * its parameters begin so, else 15. What stands behind a "." in the name doesn't count, nor what
 * stands behind its first 31 bytes. The savers AVI, AVI16 and AVI32 share the parameters of "AVI",
 * in which the rate stands among the compression options. */
VORN_API double VORN_H_GetSaveFrameRate(const char* saverName);

/* Shows a module's settings dialog and waits until it is closed. The dialog lies in a dynamic
 * library beside the module (vorn/module.h says how it is written), which is loaded for this call
 * only; the module is not started. What the user has set is stored by the dialog. Tags (all of them
 * are passed on to the dialog): MTAG_ParentWindow, the window that owns the dialog, and MTAG_Quiet,
 * not 0 for no message. True when the dialog was completed. False: error 73 with a message box, "No
 * Parameters for this saver.", unless quiet (the module has no dialog), or the dialog's own error
 * and no message. */
VORN_API VORN_Bool VORN_H_ImageModuleActivateGUI(const char* moduleName,
                                                 int32_t type,
                                                 const VORN_Word* tags);
VORN_API VORN_Bool VORN_H_ImageVaModuleActivateGUI(const char* moduleName, int32_t type, ...);

/* ---- Modules and images
 * ---------------------------------------------------------------------------------------------- */

/* Makes a handle for a loader or saver; no program is started yet. NULL: errors 25 (no name), 30
 * (wrong type), 16, 17, recorded for the thread. The caller closes it with VORN_H_ModuleClose. */
VORN_API VORN_Image* VORN_H_ModuleOpen(const char* name, int32_t type, const VORN_Word* tags);
VORN_API VORN_Image* VORN_H_ModuleVaOpen(const char* name, int32_t type, ...);

/* Adds the tags (ITAG_Filename and others), starts the module program if none is running, and
 * fetches the image information. It is the module that opens the file: a relative name counts from
 * the directory that was the host's own when it started the module program, and the host's
 * descriptors are not the module's (for pipes and open files, give /proc/PID/fd/N with the host's
 * PID; most loaders need a file in which they can go back). After a failure, call VORN_H_ImageClose
 * or VORN_H_ModuleClose. Errors: those of VORN_L_StartImageModule and VORN_L_WaitForInfo. */
VORN_API VORN_Bool VORN_H_ImageOpen(VORN_Image* image, const VORN_Word* tags);
VORN_API VORN_Bool VORN_H_ImageVaOpen(VORN_Image* image, ...);

/* Abandons the image and clears the handle's tags, error and warning. The module program is kept.
 */
VORN_API VORN_Bool VORN_H_ImageClose(VORN_Image* image); /* NULL: true */

/* Tells the module program to end and frees the handle. The program is not waited for: it has one
 * second, and when it goes on for longer, the system ends it. The same holds when the host ends
 * without a word, whatever its modules are doing then. (Only a program that is the system's reaper,
 * as the first one of a container is, waits for that second, to collect the end.) NULL is ignored.
 */
VORN_API void VORN_H_ModuleClose(VORN_Image* image);

/* Limits of module programs that this handle will start; 0 means no limit. As long as none are set,
 * loaders get 4 GiB of addresses, or what the environment variable VORN_MEMORY_LIMIT says ("512M",
 * "2G", "0"), and savers all that they want: their pictures are the host's own. (Libraries that are
 * built with sanitizers set no limit of their own accord.) A module that has used
 * its seconds of processor time is ended: error 75. One that gets no more memory fails or ends:
 * error 76; under a limit that was set here, also where the module itself says that memory is
 * short. A module that ends without
 * telling why, because it has no time to or doesn't use this library, or because the memory doesn't
 * even suffice for starting it (a few dozen MiB, most of which are never used), is error 3 (or 19)
 * as ever. */
typedef struct VORN_ModuleLimits {
    uint64_t addressSpaceBytes;
    uint64_t cpuSeconds;
} VORN_ModuleLimits;
VORN_API void VORN_H_ModuleGetLimits(const VORN_Image* image, VORN_ModuleLimits* limits);
VORN_API void VORN_H_ModuleSetLimits(VORN_Image* image, const VORN_ModuleLimits* limits);

/* Sends a module-specific command (CMD_Module = 0x3000 is the one that modules of this library act
 * on). The answer is a tag list in one block, freed with FreeMemory. NULL: a number below 0x3000
 * (no error recorded), no answer, or an error (53: the module knows no commands). */
VORN_API VORN_TagItem* VORN_H_ModuleSendCommand(VORN_Image* image,
                                                uint32_t command,
                                                const VORN_Word* tags);
VORN_API VORN_TagItem* VORN_H_ModuleVaSendCommand(VORN_Image* image, uint32_t command, ...);

/* ---- Tags of an image
 * --------------------------------------------------------------------------------------------------
 */

/* Sets tags: for a saver the description of the image, for a loader the host's wishes (ITAG_Width
 * and ITAG_Height of a scaled read, ITAG_Orientation, ITAG_ColorSpace, ITAG_ScalerName). Sizes are
 * in the host's terms. The last value of an id counts. False: error 17; what was stored before
 * stays. */
VORN_API VORN_Bool VORN_H_ImageSetTags(VORN_Image* image, const VORN_Word* tags);
VORN_API VORN_Bool VORN_H_ImageVaSetTags(VORN_Image* image, ...);

/* Reads values: (id, address) words. LONG writes an int32_t and DOUBLE a double at the address;
 * STRING, DATA and STRING LIST write a pointer to a new copy (free with VORN_L_TagFreeString,
 * VORN_L_TagFreeData, VORN_L_TagFreeData). False when an id was not found or memory for its copy is
 * short (its address is left alone; the others are filled), or when the wishes can't be met (errors
 * 26, 30, 34; nothing is written). ITAG_Width and ITAG_Height are the size that a read will deliver
 * in the orientation that the host asked for; a saver's handle answers them from its tags as long
 * as nothing has been written. */
VORN_API VORN_Bool VORN_H_ImageGetTags(VORN_Image* image, const VORN_Word* tags);
VORN_API VORN_Bool VORN_H_ImageVaGetTags(VORN_Image* image, ...);

/* ---- Pixels
 * ---------------------------------------------------------------------------------------------------------------
 */

/* Reads the whole image into the memory that the buffer describes, converting layout, sample size,
 * colour space and orientation on the way. Call it once per VORN_H_ImageOpen. The buffer's size
 * alone decides whether the image is scaled: it must be the image's, in the orientation that the
 * host asked for, or scaling is needed (error 74 in a build without scalers). Where the host has
 * named no colour space, samples are delivered as they are: the indices of a "CMAPPED" image, too.
 * Tags: ITAG_MeterCallback, ITAG_MeterCallbackUserData, ITAG_MeterTicks (16), ITAG_AbortCallback,
 * ITAG_AbortCallbackUserData. The abort callback is asked before each block of lines and after each
 * call of the meter, which then stops the read at its next step. Errors: 26, 30, 34 (size and
 * type), 60 (buffer type), 32 (no data format), 17, 2, 4, 5 (the module breaks the protocol), 3, 27
 * (aborted), 74, the module's own. After a failure the buffer holds the lines that were converted
 * before it. */
VORN_API VORN_Bool VORN_H_ImageReadData(VORN_Image* image,
                                        const VORN_ImageBuffer* buffer,
                                        const VORN_Word* tags);
VORN_API VORN_Bool VORN_H_ImageVaReadData(VORN_Image* image, const VORN_ImageBuffer* buffer, ...);

/* Writes the whole image: the mirror image of reading. A picture that is read in one orientation
 * and written back in it is the same picture again. The picture described by the handle's tags
 * (ITAG_Width, ITAG_Height, ITAG_Channels, ITAG_ColorSpace, ITAG_Orientation, ...) must have the
 * buffer's size: there is no scaling on this path (and no error number for it). Tags and errors as
 * for reading, and 29: a line is too wide for the shared area; 60 also when colours have to be
 * looked up and the tags hold no palette. */
VORN_API VORN_Bool VORN_H_ImageWriteData(VORN_Image* image,
                                         const VORN_ImageBuffer* buffer,
                                         const VORN_Word* tags);
VORN_API VORN_Bool VORN_H_ImageVaWriteData(VORN_Image* image, const VORN_ImageBuffer* buffer, ...);

/* Zero-filled image buffers of a type (1: chunky). They don't own pixels. NULL: error 17. */
VORN_API VORN_ImageBuffer* VORN_H_AllocateImageBuffer(int32_t type);
VORN_API VORN_ImageBuffer* VORN_H_AllocateChunkyImageBuffer(void);
VORN_API void VORN_H_FreeImageBuffer(VORN_ImageBuffer* buffer); /* NULL is ignored */

/* A palette (for ITAG_Palette) from line 0 of a buffer: width entries in its channels, of the given
 * colour space. Layout code 0 becomes chunky, other codes stay; where the chosen cells would not
 * fit the entries exactly (other than 3 channels for 3-sample cells, 4 for 4-sample cells) the
 * line-interleaved layout is taken. NULL: error 60 (no buffer, or impossible sizes), 17. */
VORN_API VORN_Palette* VORN_H_CreatePaletteData(const VORN_ChunkyBuffer* entries,
                                                int32_t colorSpace);
VORN_API void VORN_H_FreePaletteData(VORN_Palette* palette); /* NULL is ignored */

/* ---- Errors
 * ------------------------------------------------------------------------------------------------------------------
 */

/* Last error (warning) of the handle, or of the calling thread when it is NULL. Reading clears
 * nothing. Bits 24 to 27 of the code are a type: 8 means that the subcode is an operating-system
 * error number; with another type a nonzero subcode is an errno value. */
VORN_API VORN_ErrorPair VORN_H_ImageGetError(VORN_Image* image);
VORN_API VORN_ErrorPair VORN_H_ImageGetWarning(VORN_Image* image);

/* Readable text of an error, valid until the thread's next such call. */
VORN_API const char* VORN_H_ImageGetErrorString(int32_t code, int32_t subcode);

#ifdef __cplusplus
}
#endif

#endif
