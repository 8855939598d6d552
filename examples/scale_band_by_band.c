/* Scales raw RGB pixels while they stream from standard input to standard output. No more than
 * eight lines of the source and one of the destination are ever held:
 *
 *     scale_band_by_band 640 480 320 240 bestdown < in.rgb > out.rgb
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vorn/scaler.h>

enum { BAND_LINES = 8 };

/* Interleaved 8-bit RGB: `lines` lines of `width` pixels, in memory of its own. */
static int makeBand(VORN_ChunkyBuffer* band, int32_t width, int32_t lines) {
    memset(band, 0, sizeof *band);
    band->width = width;
    band->height = lines;
    band->channels = 3;
    band->bytesPerChannel = 1;
    uint8_t* pixels = malloc((size_t)lines * (size_t)width * 3);
    for (int c = 0; c < 3 && pixels; ++c) {
        band->pixelStep[c] = 3;
        band->lineStep[c] = width * 3;
        band->channelPlace[c] = pixels + c;
    }
    return pixels != NULL;
}

static int scale(VORN_Scaler* scaler,
                 VORN_ChunkyBuffer* source,
                 int32_t srcLines,
                 VORN_ChunkyBuffer* destination,
                 int32_t dstLines) {
    int32_t read = 0;
    int32_t result = VORN_S_InitScale(scaler, srcLines, dstLines, source, destination, NULL, NULL);
    while (result > 0) {
        result = VORN_S_SendData(scaler);
        if (result == VORN_S_FINISHED) return 1;
        if (result == VORN_S_FILL_SOURCE) {
            /* The band is filled from its first line on; the last one may be shorter. */
            const int32_t left = srcLines - read;
            const int32_t lines = left < source->height ? left : source->height;
            const size_t lineBytes = (size_t)source->width * 3;
            if (fread(source->channelPlace[0], lineBytes, (size_t)lines, stdin) != (size_t)lines) {
                return 0;
            }
            read += lines;
        } else if (result == VORN_S_TAKE_DESTINATION) {
            /* A destination band of one line: it is always the same place. */
            const size_t lineBytes = (size_t)destination->width * 3;
            if (fwrite(destination->channelPlace[0], lineBytes, 1, stdout) != 1) return 0;
        }
    }
    return 0;
}

int main(int argc, char** argv) {
    if (argc < 5) {
        fprintf(stderr, "usage: %s WIDTH HEIGHT NEW_WIDTH NEW_HEIGHT [SCALER] < in > out\n",
                argv[0]);
        return 2;
    }
    VORN_ChunkyBuffer source, destination;
    VORN_Scaler* scaler = VORN_S_AllocScaler(argc > 5 ? argv[5] : "bestdown");
    const int32_t width = atoi(argv[1]), newWidth = atoi(argv[3]);
    int done = 0;
    if (scaler && width > 0 && newWidth > 0 && makeBand(&source, width, BAND_LINES) &&
        makeBand(&destination, newWidth, 1)) {
        done = scale(scaler, &source, atoi(argv[2]), &destination, atoi(argv[4]));
        free(source.channelPlace[0]);
        free(destination.channelPlace[0]);
    }
    VORN_S_FreeScaler(scaler);
    if (!done) fprintf(stderr, "%s: could not scale\n", argv[0]);
    return done ? 0 : 1;
}
