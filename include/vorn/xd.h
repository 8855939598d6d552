/* vorn/xd.h - numbers in image files: portable binary input and output for modules.
 *
 * Image files store their numbers in a byte order that need not be the machine's. These functions
 * move 8-, 16- and 32-bit integers and 32- and 64-bit floating-point numbers between a program and
 * the bytes of a file, one by one or a whole record at a time. They allocate nothing, keep no state
 * and set no error. No address needs to be aligned.
 *
 *     typedef struct { uint32_t size; uint16_t type; uint8_t depth; } Head;
 *     Head head;
 *     XD_CopyFileToStruct("+L W B", bytes, 0, &head);     7 bytes of the file, big-endian
 *
 * Byte order characters: '+' is the most significant byte first; any other character is the
 * machine's own order, least significant byte first.
 *
 * Floating-point numbers have one form in a file, whatever the byte order: a float is its IEEE 754
 * bits, most significant byte first. A double is cut into two 32-bit halves; first the low half,
 * most significant byte first, then the high half, most significant byte first. (The double 1.0 is
 * 00 00 00 00 3F F0 00 00, which is not what other writers of big-endian doubles do.)
 */
#ifndef VORN_XD_H
#define VORN_XD_H

#include <vorn/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The value with its bytes in reverse when the order is '+', else as it is. */
VORN_API uint32_t XD_ConvertLong(uint32_t value, char order);
VORN_API uint16_t XD_ConvertWord(uint16_t value, char order);

/* The same in place. */
VORN_API void XDP_ConvertLong(uint32_t* value, char order);
VORN_API void XDP_ConvertWord(uint16_t* value, char order);

/* The number that begins at `bytes`: 1, 2, 4, 4 or 8 bytes are read. */
VORN_API uint8_t XD_ReadByte(const uint8_t* bytes);
VORN_API uint16_t XD_ReadWord(const uint8_t* bytes, char order);
VORN_API uint32_t XD_ReadLong(const uint8_t* bytes, char order);
VORN_API float XD_ReadFloat(const uint8_t* bytes);
VORN_API double XD_ReadDouble(const uint8_t* bytes);

/* Write the number at `bytes`. The result is the place behind it. */
VORN_API uint8_t* XD_WriteByte(uint8_t* bytes, uint8_t value);
VORN_API uint8_t* XD_WriteWord(uint8_t* bytes, uint16_t value, char order);
VORN_API uint8_t* XD_WriteLong(uint8_t* bytes, uint32_t value, char order);
VORN_API uint8_t* XD_WriteFloat(uint8_t* bytes, float value);
VORN_API uint8_t* XD_WriteDouble(uint8_t* bytes, double value);

/* Copy a whole record out of a file's bytes, and into them. The descriptor lists the fields:
 * first '+' or '-', the byte order of words and longs, then for each field one letter
 *
 *     letter  in the file        in memory
 *     B b     1 byte             uint8_t
 *     W w     2 bytes            16-bit integer at a multiple of 2
 *     L l     4 bytes            32-bit integer at a multiple of 4
 *     F       4 bytes            float at a multiple of 4
 *     D       8 bytes            double at a multiple of 8
 *     P p     1 byte             nothing: skipped when reading, written as 0
 *
 * with blanks, tabs, line feeds and carriage returns before it if you like, and directly behind it,
 * if you like, a repeat count: "B[3]" is three bytes. Counts are taken modulo 65536, "[]" and "[0]"
 * skip the field. Fields are packed in the file. In memory each lies at the next multiple of its
 * size, counted from the start of the record, as C lays out a plain record; beware of 32-bit
 * systems on which C puts a double at a multiple of 4: give such a record an explicit gap.
 *
 * `spare` has no use; pass 0. The result is the number of bytes of the record that were filled
 * (read), gaps between fields included; a gap behind the last field isn't. It is 0 when the
 * descriptor is bad (NULL, another first character, an unknown letter); the fields before the bad
 * place are copied all the same. Bytes in the gaps are left alone. The result can't tell the size
 * of records above 32767 bytes (it is the size's low 16 bits); they are copied all the same. */
VORN_API int16_t XD_CopyFileToStruct(const char* descriptor,
                                     const uint8_t* file,
                                     int32_t spare,
                                     void* record);
VORN_API int16_t XD_CopyStructToFile(const char* descriptor,
                                     const void* record,
                                     int32_t spare,
                                     uint8_t* file);

#ifdef __cplusplus
}
#endif

#endif
