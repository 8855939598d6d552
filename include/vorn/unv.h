/* vorn/unv.h - the universal loader: names the loader for a file. It is a library of its own
 * (libvornunv), loaded by VORN_H_ImageGetLoaderName and VORN_L_GetLoaderName when they need it.
 *
 * It knows no format. The loaders of the home directory announce in their capability files how
 * their files begin ("Signatures") and what their names end in ("Extensions"); see
 * docs/capability-files.md.
 */
#ifndef VORN_UNV_H
#define VORN_UNV_H

#include <vorn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

enum { VORN_UNIVERSAL_ANSWER_SIZE = 4096 };

/* Writes the bare name of the loader for the file into `answer`, a buffer of at least
 * VORN_UNIVERSAL_ANSWER_SIZE bytes. The loader whose signature pins down the most of the file's
 * first 4096 bytes wins; the file's ending decides between equals, and where no signature matches.
 * `options` must be 0. False, and an empty answer: no loader knows the file, or it can't be read.
 */
VORN_API VORN_Bool VORN_M_UniversalLoader(const char* fileName, char* answer, int32_t options);

#ifdef __cplusplus
}
#endif

#endif
