/* vorn/scaler.h - scaling pixels while they stream.
 *
 * A scaler makes an image of another size band by band: you fill a source buffer with the next
 * lines of the source image and take finished lines out of a destination buffer, until all are
 * made. Neither buffer needs to hold a whole image; the scaler's own memory is proportional to the
 * line widths.
 *
 *     VORN_Scaler* scaler = VORN_S_AllocScaler("bestdown");
 *     int32_t result = VORN_S_InitScale(scaler, srcLines, dstLines, &source, &destination, 0, 0);
 *     while (result > 0 && (result = VORN_S_SendData(scaler)) != VORN_S_FINISHED) {
 *         if (result == VORN_S_FILL_SOURCE) { put the next source lines into the source buffer }
 *         if (result == VORN_S_TAKE_DESTINATION) { take the new lines out of the destination }
 *     }
 *     VORN_S_FreeScaler(scaler);
 *
 * The buffers are chunky buffers (vorn/types.h). Of a record count: width (samples of a line),
 * height (lines that the buffer holds at a time: the band), channels, bytesPerChannel, and per
 * channel the pixel step, the line step and the place. Steps are bytes, may be negative, and need
 * not be the same on both sides, so pixels can be interleaved, planar, mirrored or turned.
 * A channel whose place is NULL in either record is skipped. Source and destination must not
 * overlap. Palette indices can't be averaged: scale them with "fastest" or as colours.
 *
 * Samples are exact: the size of the bands, the layouts and the processor never change them.
 *
 * A scaler belongs to one thread at a time. Different scalers share nothing.
 */
#ifndef VORN_SCALER_H
#define VORN_SCALER_H

#include <vorn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* A scaler object. Opaque. */
typedef struct VORN_Scaler VORN_Scaler;

/* Called after each finished destination line; a nonzero answer stops the scaler. The line stays in
 * the destination buffer. The callback must not call the scaler. */
typedef int32_t (*VORN_LineCallback)(void* userData);

/* What VORN_S_InitScale and VORN_S_SendData answer. */
enum {
    VORN_S_READY = 1,            /* InitScale: go on with SendData */
    VORN_S_STOPPED = 0,          /* SendData: the line callback asked to stop */
    VORN_S_FILL_SOURCE = 1,      /* SendData: put the next lines into the source buffer */
    VORN_S_TAKE_DESTINATION = 2, /* SendData: take the new lines out of the destination buffer */
    VORN_S_FINISHED = 3,         /* SendData: every line was made and handed out */
    VORN_S_NO_MEMORY = -1,
    VORN_S_CHANNELS_DIFFER = -2, /* the records' channel counts differ (or are not 1 to 8) */
    VORN_S_BYTES_DIFFER = -3,    /* their bytes per channel differ (or are not 1 or 2) */
    VORN_S_CANT_GO_ON = -4,      /* no image is set up in this scaler, or an argument is NULL */
    VORN_S_BAD_SIZE = -5         /* a size is out of the scaler's range */
};

/* Makes a scaler. The name is compared without regard to case:
 *
 *   "qdscale", "fastest"   copies the nearest sample
 *   "avscale", "bestdown"  averages the area that a destination sample covers
 *   "blscale"              interpolates between the two nearest samples and lines
 *   "bcscale", "bestup"    separable cubic filter (Mitchell-Netravali family)
 *
 * Any other name, and NULL, makes a "fastest" scaler. The scaler is released with
 * VORN_S_FreeScaler. NULL when memory is short.
 *
 * "avscale" weighs exactly by area and rounds once at the end; an image of one constant value stays
 * constant. "blscale" lays the first and last samples (and lines) of both images on each other.
 * "bcscale" reads the environment variable VORN_BICUBIC_BLUR at every VORN_S_InitScale: a number
 * (decimal point, whatever the locale) from 0, sharpest when reducing, over 1, the value taken when
 * it is unset or no number, to 256; values beyond the ends are taken as the ends. */
VORN_API VORN_Scaler* VORN_S_AllocScaler(const char* name);

/* The name of the method that suits a pair of sizes best: "bestdown" when no side grows and
 * "bestup" when one does, "blscale" where the cubic filter doesn't go or makes nothing better (very
 * small images, a side of 1 or above 16000), "fastest" for a single sample. */
VORN_API const char* VORN_S_ChooseScaler(int32_t srcWidth,
                                         int32_t srcLines,
                                         int32_t dstWidth,
                                         int32_t dstLines);

/* Sets up one image, ending the one before.
 *
 * srcLines, dstLines: lines of the whole source and destination images. The widths are those of the
 * records. Sizes are 1 to 65536 each, for the cubic filter 2 to 16000.
 * source, destination: the bands. The records are kept, not copied, until VORN_S_EndScale or the
 * next VORN_S_InitScale; so are their pixels. What the records say now counts for the whole image
 * (a band holds `height` lines, at least 1), but the height of the source record: see
 * VORN_S_FILL_SOURCE below.
 * lineCallback: may be NULL; lines are then made several at a time where that is faster. userData
 * is passed to it.
 *
 * The result is VORN_S_READY (1) or negative: -1, -2, -3, -5. After a failure nothing is left
 * allocated and the scaler can be set up again or freed. No error pair is recorded. */
VORN_API int32_t VORN_S_InitScale(VORN_Scaler* scaler,
                                  int32_t srcLines,
                                  int32_t dstLines,
                                  const VORN_ChunkyBuffer* source,
                                  const VORN_ChunkyBuffer* destination,
                                  VORN_LineCallback lineCallback,
                                  void* userData);

/* Runs the scaler until it needs something. The results ask for this:
 *
 * VORN_S_FILL_SOURCE (1): write the next lines of the source image into the source buffer, from its
 * first line on, as many as the source record's height says at the time of the call (never more
 * than it said at VORN_S_InitScale), at the image's end those that are left; then call again. What
 * the buffer held before isn't needed any more.
 *
 * VORN_S_TAKE_DESTINATION (2): new lines stand in the destination buffer. The buffer is a ring:
 * they begin where the last ones ended and go on at the buffer's first line behind its last. They
 * are as many as the line callback was called for since the last result 2: the buffer's height, or
 * at the end the rest. Take them before you call again. A buffer that holds the whole destination
 * image simply fills up: take nothing, call again.
 *
 * VORN_S_FINISHED (3): all lines were made and handed out; always after a 2.
 *
 * VORN_S_STOPPED (0): the line callback answered nonzero.
 *
 * Negative: VORN_S_CANT_GO_ON. */
VORN_API int32_t VORN_S_SendData(VORN_Scaler* scaler);

/* Releases the current image's buffers. The scaler can be set up again. Safe to call at any time
 * and twice; NULL is ignored. */
VORN_API void VORN_S_EndScale(VORN_Scaler* scaler);

/* Destroys a scaler, also a running one. NULL is ignored. */
VORN_API void VORN_S_FreeScaler(VORN_Scaler* scaler);

#ifdef __cplusplus
}
#endif

#endif
