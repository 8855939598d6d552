/* vorn/library.h - the machinery that host and module share: tag lists, string lists, capability
 * files, handles and transfer locks, data formats, line copies, error codes.
 *
 * Tags
 * A user tag list is what callers write: words (VORN_Word), an id, then its value, ended by
 * TAG_End:
 *
 *   type          value word                                        data of the stored item
 *   LONG          the integer itself                                4 bytes
 *   STRING        const char*                                       the characters and their NUL
 *   DATA          pointer to a VORN_DataBlock (count, then bytes)   the bytes
 *   STRING LIST   const char* const*, ended by NULL                 a 32-bit count, then the
 * strings FUNCPTR       a function, cast to VORN_Word                     never stored DOUBLE const
 * double*                                     8 bytes
 *
 * NULL as a STRING, DATA or STRING LIST value drops the entry. In the Va forms each id is passed as
 * `unsigned` (the constants of vorn/tags.h are) and each value as one word: pass integers wider or
 * narrower than int with a cast to VORN_Word.
 *
 * A tag list is the stored form: items (VORN_TagItem and data) back to back, ended by an item with
 * id TAG_End. In private memory items may continue elsewhere with TAG_Goto. Walkers trust the lists
 * they are given: lists that came from another program are checked where they are received.
 */
#ifndef VORN_LIBRARY_H
#define VORN_LIBRARY_H

#include <vorn/support.h>
#include <vorn/tags.h>
#include <vorn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Tag lists
 * ------------------------------------------------------------------------------------------- */

/* First item with the id, in walking order, or NULL. Hidden items (TAG_SkipTag) compare like any
 * other. TAG_End finds the end item. A NULL list is an empty list here and in the next two
 * functions. */
VORN_API VORN_TagItem* VORN_L_TagFind(const VORN_TagItem* list, uint32_t id);

/* Bytes of a flat copy of the list, without its end item, hidden items and the ids in `leaveOut`
 * (an array ended by 0, or NULL). */
VORN_API uint32_t VORN_L_TagListSize(const VORN_TagItem* list, const uint32_t* leaveOut);

/* Copies all items but hidden ones, without an end item, to `destination`. With `swap`, the ids of
 * width and height, x and y aspect, x and y DPI, and VORN_ID_SWAP_X and VORN_ID_SWAP_Y are
 * exchanged. */
VORN_API void VORN_L_TagCopyList(const VORN_TagItem* list, void* destination, VORN_Bool swap);

/* Writes one item from what VORN_L_DetermineUserTagSize gave; for TAG_Taglist, the items of the
 * list at `data`. `data` of a DATA item lies behind its count, which is read too. Pad bytes are
 * cleared. The result is the place behind it. */
VORN_API void* VORN_L_TagCopy(void* destination, uint32_t id, int32_t size, const void* data);

/* A new tracked block with one item (or a spliced list) that goes on at `continuation`, or ends
 * when that is NULL. Building a list this way puts the newest value of an id first. NULL when
 * memory is short or there is no tracker. */
VORN_API VORN_TagItem* VORN_L_TagAdd(
    VORN_Tracker* tracker, VORN_TagItem* continuation, uint32_t id, int32_t size, const void* data);

/* Data bytes that an entry of a user tag list takes in an item (without the 8 of its head), -1 when
 * it is not stored. `value` is the address of the value word; *data receives where the data lies.
 */
VORN_API int32_t VORN_L_DetermineUserTagSize(uint32_t id,
                                             const VORN_Word* value,
                                             const void** data);

/* Bytes that VORN_L_CopyUserTags writes for the list (end item included): first id, then the words
 * behind. */
VORN_API uint32_t VORN_L_UserTagListSize(uint32_t first, const VORN_Word* rest);

/* Writes the list in stored form with its end item; the result is the number of bytes. `size` is
 * not used. */
VORN_API uint32_t VORN_L_CopyUserTags(uint32_t first,
                                      const VORN_Word* rest,
                                      void* destination,
                                      uint32_t size);

/* A new tracked flat copy with an end item, or NULL when memory is short. */
VORN_API VORN_TagItem* VORN_L_TagListDup(VORN_Tracker* tracker, const VORN_TagItem* list);

/* Hides the first item of each id in the argument list (`unsigned` ids, ended by 0). The result
 * counts them. */
VORN_API int32_t VORN_L_TagVaDestroy(VORN_TagItem* list, ...);

/* Value getters. LONG and DOUBLE give 0 for an item of another length. The others give a new copy
 * that the caller frees, NULL when memory is short: a string is always terminated (an item without
 * data gives an empty string); a string list is one block (pointers, then strings), and NULL too
 * when the item doesn't hold as many strings as it says. */
VORN_API int32_t VORN_L_TagGetLongVal(const VORN_TagItem* item);
VORN_API double VORN_L_TagGetDoubleVal(const VORN_TagItem* item);
VORN_API void* VORN_L_TagGetData(const VORN_TagItem* item);
VORN_API char* VORN_L_TagGetString(const VORN_TagItem* item);
VORN_API char** VORN_L_TagGetStringList(const VORN_TagItem* item);
VORN_API void VORN_L_TagFreeData(void* data); /* also frees string lists made by the getter */
VORN_API void VORN_L_TagFreeString(char* text);

/* Write one item (length rounded up to 4) at `destination` and answer the place behind it; the
 * second form reserves the data bytes without writing them. */
VORN_API void* VORN_L_writetag(void* destination, uint32_t id, const void* data, uint32_t size);
VORN_API void* VORN_L_writetagnodata(void* destination,
                                     uint32_t id,
                                     const void* data,
                                     uint32_t size);

/* Copies the text of a STRING item into a buffer of `size` bytes, cut to fit. NULL when the size is
 * below 1 (the buffer is untouched) or there is no such item (the buffer is then empty). */
VORN_API char* VORN_L_CopyTagStringOrNull(const VORN_TagItem* list,
                                          uint32_t id,
                                          char* buffer,
                                          int32_t size);

/* Searches a user tag list (TAG_VaList is followed: its value is the address of a variable that
 * points at further words). When found, *out (may be NULL) receives the value word, else the
 * default. */
VORN_API VORN_Bool VORN_L_FindAPILongTag(const VORN_Word* words,
                                         uint32_t id,
                                         VORN_Word* out,
                                         VORN_Word defaultValue);
VORN_API VORN_Bool VORN_L_FindAPIStringTag(const VORN_Word* words,
                                           uint32_t id,
                                           VORN_Word* out,
                                           VORN_Word defaultValue);

/* Printable name of a tag id, padded with blanks to 26 characters. An unknown id is formatted into
 * one buffer of the whole process, valid until the next such call on any thread. */
VORN_API const char* VORN_L_gettagid(uint32_t id);

/* Splits a text at its commas. Free with VORN_H_FreeStringList. NULL for an empty text, when memory
 * is short, and for more than 32,767 fields or a field of more than 32,767 characters. */
VORN_API char** VORN_L_StringToStringList(const char* text);

/* ---- Capability files and the keyword=value parser
 * --------------------------------------------------------- */

enum {
    PARSE_Long = 0,
    PARSE_Bool = 1,
    PARSE_String = 2,
    PARSE_Float4 = 3,
    PARSE_STRING_SIZE = 300
};

/* One keyword of a table; the table ends with a NULL keyword. */
typedef struct VORN_ParseEntry {
    const char* keyword;
    uint32_t kind;          /* PARSE_ */
    void* destination;      /* int32_t, int32_t, char[PARSE_STRING_SIZE], float[4] */
    VORN_Word defaultValue; /* the value; the value; const char* or 0 for ""; const float* or 0 for
                               0,0,0,1 */
} VORN_ParseEntry;

/* Sets every destination to its default, then reads the first line with each keyword (NULL text:
 * defaults only). Lines end at a line feed (a carriage return before it is dropped); "#" begins a
 * comment line; a line longer than 299 bytes is read in pieces of 299. A string value may be quoted
 * with ' or " (a backslash before the quote keeps it); an unclosed quote runs to the end of the
 * line. Of four floats, those that are read are stored and the others keep the default. */
VORN_API void VORN_u_ParseGUIResults(const char* text, const VORN_ParseEntry* table);

/* Text of a module's capability file (freed with FreeMemory), or NULL. `name` is the module's file
 * name, with or without ".exe"; the directory of the other type is looked into as well. */
VORN_API char* VORN_L_GetCapString(const char* name, int32_t type);

/* Reads the capability file into the calling thread's capability record, defaults first; 1 when
 * there was a file. What the accessors below answer is valid until the next such call on the
 * thread. */
VORN_API VORN_Bool VORN_L_GetParseCap(const char* name, int32_t type);
VORN_API VORN_Bool VORN_L_AlphaAllowed(void);
VORN_API VORN_Bool VORN_L_Device(void);
VORN_API VORN_Bool VORN_L_Animation(void);
VORN_API const char* VORN_L_GetColorSpaces(void);
VORN_API const char* VORN_L_GetSizes(void);
VORN_API const char* VORN_L_GetDefaultExtension(void);
VORN_API const char* VORN_L_GetLongModuleName(void);
VORN_API const char* VORN_L_GetSaverDepths(void);

/* True when `directory` holds the file name.cap. */
VORN_API VORN_Bool VORN_L_CapAvailable(const char* directory, const char* name);

/* Whether a size or a depth is in a list of ranges ("1x1-640x480", "8", "1-8"). A NULL list allows
 * all. */
VORN_API VORN_Bool VORN_L_CheckSizeLegality(char* const* sizes, int32_t width, int32_t height);
VORN_API VORN_Bool VORN_L_CheckDepthLegality(char* const* depths, int32_t depth);
VORN_API int32_t VORN_L_GetMaxDepth(char* const* depths);

/* Number of a colour-space name (0 when unknown), and whether a list names a colour space. */
VORN_API int32_t VORN_L_FindColorSpace(const char* name);
VORN_API VORN_Bool VORN_L_ColorSpaceInList(int32_t colorSpace, char* const* list);

/* Channels of a colour space's colours: 1 for grey and for palette indices, 3, 4 for "CMYK"; 0 for
 * "None" and for numbers that are no colour space. */
VORN_API int32_t VORN_L_ColorSpaceChannels(int32_t colorSpace);

/* The universal loader's choice for a file: the bare name of a loader (valid until the thread's
 * next question) or NULL (error 28: no answer, 15: no such loader, 20 or 17: the loaders could not
 * be listed). */
VORN_API const char* VORN_L_GetLoaderName(const char* fileName);

/* ---- Error codes
 * --------------------------------------------------------------------------------------------- */

/* Records an error (a warning) for the calling thread and, when given, for the image handle. */
VORN_API void VORN_L_SetErrorCode(VORN_Image* image, int32_t code, int32_t subcode);
VORN_API void VORN_L_SetWarningCode(VORN_Image* image, int32_t code, int32_t subcode);
VORN_API void VORN_L_SetErrorCode_DEBUG(
    VORN_Image* image, int32_t code, int32_t subcode, VORN_Word a, VORN_Word b);

/* Loads and releases the calling thread's table of error texts (the file "Errors" of the home
 * directory). It is loaded on first need and released when the thread ends. */
VORN_API void VORN_L_ReadErrorStrings(void);
VORN_API void VORN_L_FreeErrorStrings(void);

/* ---- Data formats and line copies
 * ------------------------------------------------------------------------------ */

/* Fills in the steps and places of a standard layout (codes 1 to 6) behind channelPlace[0], and
 * every bits-per-channel entry that is 0. Nothing beyond `channels`, and never beyond eight
 * channels, is touched. The second form serves records whose places are addresses. */
VORN_API void VORN_L_DataFormatMacroSetup(VORN_DataFormat* format);
VORN_API void VORN_L_ChunkyBufferMacroSetup(VORN_ChunkyBuffer* buffer);

/* True when width and height are 1 to 65536, channels 1 to 8 and bytes per channel 1 or 2. */
VORN_API VORN_Bool VORN_L_CheckDataFormat(const VORN_DataFormat* format);

/* Copies everything but steps and places. */
VORN_API void VORN_L_InitChunkyBufferFromDataFormat(VORN_ChunkyBuffer* buffer,
                                                    const VORN_DataFormat* format);

/* Chooses the conversion code (0 to 7; 0 is a plain copy) between two colour spaces. Always true.
 */
VORN_API VORN_Bool VORN_L_SetColorSpaceCorrection(uint32_t* code,
                                                  int32_t source,
                                                  int32_t destination);

/* Copy one line, converting layout, sample size (8 to 16 bits: times 257; 16 to 8: the high byte)
 * and, by `code`, the colour space. The destination's width counts: the source line must have as
 * many pixels. The two lines must not overlap. Bytes between the samples are left alone, and none
 * before the first or behind the last of them is touched. Channels behind the converted ones
 * (alpha) are copied one to one, behind looked-up ones too. A pair of buffers that doesn't suit the
 * code is copied plainly. Between RGB and YUV601 an absent source channel counts as 0 (chroma: as
 * the middle), an absent destination channel is skipped, and samples outside the video ranges are
 * clamped. Grey from 8 to 16 bits is 257 times the sum of red, green and blue, divided by 3. The
 * palette (for code 7, else NULL) holds its channels side by side in the destination's sample size;
 * an index beyond its width gives 0, and without a palette code 7 writes nothing. */
VORN_API void VORN_L_CopyCBtoCB(const VORN_ChunkyBuffer* source,
                                const VORN_ChunkyBuffer* destination,
                                int32_t sourceLine,
                                int32_t destinationLine,
                                uint32_t code,
                                const VORN_ChunkyBuffer* palette);
VORN_API void VORN_L_CopyDataFormatToChunkyBuffer(const VORN_DataFormat* format,
                                                  const void* base,
                                                  const VORN_ChunkyBuffer* destination,
                                                  int32_t sourceLine,
                                                  int32_t destinationLine,
                                                  uint32_t code,
                                                  const VORN_ChunkyBuffer* palette);
VORN_API void VORN_L_CopyChunkyBufferToDataFormat(const VORN_ChunkyBuffer* source,
                                                  const VORN_DataFormat* format,
                                                  void* base,
                                                  int32_t sourceLine,
                                                  int32_t destinationLine,
                                                  uint32_t code,
                                                  const VORN_ChunkyBuffer* palette);

/* ---- Image handles
 * -----------------------------------------------------------------------------------------------
 */

/* Makes a handle that is not connected, with the user tags in its lists. NULL (error 17) when
 * memory is short. The Va form's first argument is not used. */
VORN_API VORN_Image* VORN_L_ImageCreateHandle(const VORN_Word* tags);
VORN_API VORN_Image* VORN_L_ImageVaCreateHandle(VORN_Word unused, ...);

/* Drops all tags but ITAG_Input, ITAG_Output, MTAG_ModuleType and MTAG_ModuleName and clears the
 * handle's error and warning. The connection stays. NULL on failure: the handle is then left with
 * the tags copied so far, or without a tracker, and adding tags to it fails with error 17 until it
 * is reset again. */
VORN_API VORN_Image* VORN_L_ImageResetHandle(VORN_Image* image);

/* Tells the module program to end, see VORN_H_ModuleClose, and releases the connection; the handle
 * stays. NULL is ignored. */
VORN_API void VORN_L_ImageCloseHandle(VORN_Image* image);

/* Frees the handle and its tags, not its connection. NULL is ignored. */
VORN_API void VORN_L_ImageDestroyHandle(VORN_Image* image);

/* Emergency stop, from any thread of the host: the call that uses the handle, blocked or not, ends
 * with error 3 (4 where a saver is sent its next block), and the link stays down until
 * VORN_H_ImageOpen starts a module program anew. The stopped module program is ended when the
 * connection is released: by that call, or when the handle is closed. A stop during
 * VORN_H_ImageOpen counts from the beginning of that call; one that came before has no effect on
 * it. */
VORN_API void VORN_L_ShutDownHandle(VORN_Image* image);

VORN_API VORN_TagItem* VORN_L_ImageGetTagList(VORN_Image* image);
VORN_API VORN_Tracker* VORN_L_ImageGetTagTrack(VORN_Image* image);
/* Module type of the handle; 1 when its tags don't say. */
VORN_API int32_t VORN_L_ImageGetModType(VORN_Image* image);

/* ---- Transfer areas
 * ------------------------------------------------------------------------------------------------
 */

/* Take and give back the area that this side reads (or writes). A start blocks until the peer has
 * handed the area over, and fails with error 3 when the peer's program has ended or the link is
 * down. A write of more than the area holds fails with error 29. A second start of reading gives
 * the same pointer without waiting. Each successful start of writing is followed by exactly one
 * end. What a host reads here was written by another program: check it before you believe it. */
VORN_API void* VORN_L_StartReadingSharedStuff(SharedStuff* stuff);
VORN_API void VORN_L_EndReadingSharedStuff(SharedStuff* stuff);
VORN_API void* VORN_L_AttemptStartReadingSharedStuff(
    SharedStuff* stuff); /* never blocks, sets no error */
VORN_API void* VORN_L_StartWritingSharedStuff(SharedStuff* stuff, uint32_t size);
VORN_API void VORN_L_EndWritingSharedStuff(SharedStuff* stuff);
VORN_API void* VORN_L_ImageHandleStartReading(VORN_Image* image);
VORN_API void VORN_L_ImageHandleEndReading(VORN_Image* image);
VORN_API void* VORN_L_ImageHandleStartWriting(VORN_Image* image, uint32_t size);
VORN_API void VORN_L_ImageHandleEndWriting(VORN_Image* image);

/* ---- The host's protocol, step by step
 * ------------------------------------------------------------------------------- */

/* Start the module program of a handle if none is running, and wait for its first acknowledgement.
 * Errors: 1001 no tags, 33 no module name, 17 memory, 19 with the system's number as subcode, 3, 45
 * older and 46 newer protocol version (the module program is then ended at once). */
VORN_API VORN_Bool VORN_L_StartImageModule(VORN_Image* image);
VORN_API VORN_Bool VORN_L_StartModule(VORN_Image* image, const char* moduleFileName, int32_t type);

/* Ask for the image information and merge the answer into the handle (errors 3, 5, 6, 17, 29, 30,
 * 31 and the module's own). */
VORN_API VORN_Bool VORN_L_WaitForInfo(VORN_Image* image);

/* Ask a loader for pixels, a saver to take some. True when it is ready. */
VORN_API VORN_Bool VORN_L_StartReadingImage(VORN_Image* image);
VORN_API VORN_Bool VORN_L_StartWritingImage(VORN_Image* image);

VORN_API VORN_Bool VORN_L_SendCMDAbort(VORN_Image* image);     /* waits for the acknowledgement */
VORN_API VORN_Bool VORN_L_SendCMDTerminate(VORN_Image* image); /* has none */
VORN_API void VORN_L_WaitForTerminate(VORN_Image* image); /* never changes the handle's error */

/* Collect an acknowledgement that is owed, dropping what comes before it; false when an error came
 * with it. */
VORN_API VORN_Bool VORN_L_WaitForAck(VORN_Image* image);

/* What a message (a tag list in private memory) says: an acknowledgement? an error (recorded on the
 * handle)? */
VORN_API VORN_Bool VORN_L_HandleAckMsg(VORN_Image* image, const VORN_TagItem* message);
VORN_API VORN_Bool VORN_L_HandleErrorCode(VORN_Image* image, const VORN_TagItem* message);

/* As VORN_H_ModuleSendCommand, without its check of the number. */
VORN_API VORN_TagItem* VORN_L_SendCMD(VORN_Image* image, uint32_t command, const VORN_Word* tags);

/* Read values out of the image tag list alone: what the module reported. (id, address) words, see
 * VORN_H_ImageGetTags. */
VORN_API VORN_Bool VORN_L_ImageModuleGetTags(VORN_Image* image, const VORN_Word* tags);
VORN_API VORN_Bool VORN_L_ImageVaModuleGetTags(VORN_Image* image, ...);

/* ---- Transfers, line by line
 * -------------------------------------------------------------------------------------------
 *
 * For a host that holds a few lines instead of a picture. These calls move lines in the module's
 * order and know nothing of orientation or scaling.
 *
 * Reading: VORN_H_ImageOpen; VORN_H_ImageSetTags with the colour space that is wanted;
 * VORN_H_ImageGetTags (of any tag: it is what chooses the conversion); VORN_L_StartReadingImage;
 * VORN_L_ImageReadLineChunky until all lines have come; VORN_L_WaitForAck, after which the handle's
 * error tells whether the file was whole.
 * Writing: VORN_H_ImageOpen; VORN_H_ImageSetTags with the description, in a colour space that the
 * saver takes; VORN_L_StartWritingImage; VORN_L_ImageWriteChunkyBegin; VORN_L_ImageWriteLineChunky
 * until all lines are gone; VORN_L_ImageWriteChunkyEnd; VORN_L_SendCMDAbort, which is the end of
 * the data, and VORN_L_WaitForAck, which says whether the file was written.
 * Where either can't go on, VORN_L_SendCMDAbort brings the module back to its command loop; a
 * saver's file is then as it was before. */

/* Chooses the orientation correction from a source to a target orientation (0 to 7). True when it
 * exchanges width and height. The same orientation on both sides leaves the handle as it is. */
VORN_API VORN_Bool VORN_L_SetOrientationCorrection(VORN_Image* image,
                                                   int32_t source,
                                                   int32_t target);

/* The palette of an ITAG_Palette item in the form that line reads look colours up in: converted to
 * colour space `target`, with the given channels and the sample size of the lines that are wanted;
 * `flags` are kept in the record. One block, freed with FreeMemory. NULL without an item, when
 * memory is short, and for an item whose record or entries are not in order. */
VORN_API VORN_ChunkyBuffer* VORN_L_ConvertPalette(
    const VORN_TagItem* item, int32_t bytes, int32_t channels, uint32_t flags, int32_t target);

/* Reads the next `buffer->height` lines of a started read into the buffer. The result is the number
 * of lines, 0 on failure or abort. `format` is the module's data format, `palette` the converted
 * palette or NULL. */
VORN_API int32_t VORN_L_ImageReadLineChunky(VORN_Image* image,
                                            const VORN_ChunkyBuffer* buffer,
                                            const VORN_DataFormat* format,
                                            VORN_AbortCallback abort,
                                            VORN_Word abortData,
                                            const VORN_ChunkyBuffer* palette);

/* State of a write. Begin works out the layout of the blocks from a buffer (already in the saver's
 * orientation) and must be paired with End. NULL is error 17. */
typedef struct VORN_WriteState VORN_WriteState;
VORN_API VORN_WriteState* VORN_L_ImageWriteChunkyBegin(VORN_Image* image,
                                                       const VORN_ChunkyBuffer* buffer,
                                                       VORN_AbortCallback abort,
                                                       VORN_Word abortData,
                                                       const VORN_ChunkyBuffer* palette);
VORN_API void VORN_L_ImageWriteChunkyEnd(VORN_WriteState* state);
/* Sends `buffer->height` lines as one block that begins with line `first`. The result is the number
 * of lines sent, 0 on failure or abort. */
VORN_API int32_t VORN_L_ImageWriteLineChunky(VORN_WriteState* state,
                                             const VORN_ChunkyBuffer* buffer,
                                             int32_t first);
VORN_API int32_t
VORN_L_GetLineSize(const VORN_WriteState* state); /* bytes of one line in a block */
VORN_API int32_t
VORN_L_WriteImageDataMaxSize(VORN_Image* image); /* bytes of a block, with a margin */

#ifdef __cplusplus
}
#endif

#endif
