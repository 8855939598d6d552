/* Loads a picture, whatever its format, as 8-bit RGB, and says how bright it is on the whole. */
#include <stdio.h>
#include <stdlib.h>
#include <vorn/vorn.h>

static int fail(const char* file, VORN_Image* image) {
    const VORN_ErrorPair error = VORN_H_ImageGetError(image);
    fprintf(stderr, "%s: %s\n", file,
            VORN_H_ImageGetErrorString(VORN_ErrorPairCode(error), VORN_ErrorPairSubcode(error)));
    VORN_H_ModuleClose(image);
    return 1;
}

/* Ten calls and declarations are all there is to it; each one that can fail says so. */
static int load(const char* file, VORN_ImageBuffer* buffer) {
    char loader[256];
    int32_t width = 0, height = 0;
    if (!VORN_H_ImageGetLoaderName(file, NULL, loader, sizeof loader)) return fail(file, NULL);
    VORN_Image* image = VORN_H_ModuleVaOpen(loader, VORN_LOADER, TAG_End);
    if (image == NULL) return fail(file, NULL);
    if (!VORN_H_ImageVaOpen(image, ITAG_Filename, file, TAG_End)) return fail(file, image);
    VORN_H_ImageVaSetTags(image, ITAG_ColorSpace, VORN_CS_RGB, TAG_End);
    if (!VORN_H_ImageVaGetTags(image, ITAG_Width, &width, ITAG_Height, &height, TAG_End))
        return fail(file, image);

    buffer->type = VORN_BUFFER_CHUNKY;
    buffer->chunky = (VORN_ChunkyBuffer){
        .layout = DF_Chunky3x8, .width = width, .height = height, .channels = 3};
    buffer->chunky.channelPlace[0] = malloc((size_t)width * (size_t)height * 3);
    if (buffer->chunky.channelPlace[0] == NULL) return fail(file, image);
    VORN_L_ChunkyBufferMacroSetup(&buffer->chunky);
    if (!VORN_H_ImageVaReadData(image, buffer, TAG_End)) return fail(file, image);
    VORN_H_ModuleClose(image);
    return 0;
}

int main(int argc, char** argv) {
    VORN_ImageBuffer buffer;
    if (argc != 2) {
        fprintf(stderr, "usage: load FILE\n");
        return 2;
    }
    if (load(argv[1], &buffer) != 0) return 1;

    const uint8_t* pixels = buffer.chunky.channelPlace[0];
    const size_t count = (size_t)buffer.chunky.width * (size_t)buffer.chunky.height * 3;
    uint64_t sum = 0;
    for (size_t i = 0; i < count; ++i) sum += pixels[i];
    printf("%d x %d, mean brightness %d of 255\n", (int)buffer.chunky.width,
           (int)buffer.chunky.height, (int)(sum / count));
    free(buffer.chunky.channelPlace[0]);
    return 0;
}
