/* vorn/tags.h - the ids of all tags.
 *
 * An id's top byte is the type of its value: 0 control, 1 LONG, 2 STRING, 3 DATA, 4 STRING LIST, 5
 * FUNCPTR, 6 DOUBLE. See vorn/library.h for what a value of each type looks like in a user tag
 * list.
 */
#ifndef VORN_TAGS_H
#define VORN_TAGS_H

#include <vorn/types.h>

#define VORN_TAG_TYPE(id) ((uint32_t)(id) >> 24)
enum {
    VORN_TYPE_CONTROL = 0,
    VORN_TYPE_LONG = 1,
    VORN_TYPE_STRING = 2,
    VORN_TYPE_DATA = 3,
    VORN_TYPE_STRING_LIST = 4,
    VORN_TYPE_FUNCPTR = 5,
    VORN_TYPE_DOUBLE = 6
};

#define TAG_End 0x00000000u          /* control: end of a list */
#define TAG_Goto 0x00000001u         /* control: continue at another item */
#define TAG_Taglist 0x00000002u      /* control: splice a tag list */
#define TAG_SkipTag 0x00000003u      /* control: hidden item */
#define TAG_Interrupt 0x00000004u    /* control: first item of an interrupting host message */
#define TAG_VaList 0x00000005u       /* control: continue a user tag list at an argument cursor */
#define MTAG_NumModules 0x01000000u  /* LONG: number of modules of a kind */
#define MTAG_NumUNUSED1 0x01000001u  /* LONG: reserved */
#define MTAG_NumUNUSED2 0x01000002u  /* LONG: reserved */
#define MTAG_NumUNUSED3 0x01000003u  /* LONG: reserved */
#define MTAG_Terminate 0x01000004u   /* LONG: in a data message, nonzero: the module has stopped */
#define MTAG_ModuleType 0x01000005u  /* LONG: 1 loader, 2 saver */
#define MTAG_Command 0x01000006u     /* LONG: command number of a host message */
#define MTAG_Ack 0x01000007u         /* LONG: acknowledgement counter */
#define MTAG_ModuleIsDLL 0x0100000Au /* LONG: module query answer */
#define MTAG_HasCapFile 0x0100000Bu  /* LONG: module query answer */
#define ITAG_ReadLineNo 0x01000064u  /* LONG: first line of a data block */
#define ITAG_ReadWidth 0x01000065u   /* LONG: width value of a data block */
#define ITAG_ReadHeight 0x01000066u  /* LONG: lines in a data block */
#define TAG_SIIStatus 0x01000067u    /* LONG: status; the library does not act on it */
#define ITAG_Input 0x01000068u       /* LONG: the handle is for reading */
#define ITAG_Output 0x01000069u      /* LONG: the handle is for writing */
#define ITAG_Width 0x0100006Au       /* LONG: image width */
#define ITAG_Height 0x0100006Bu      /* LONG: image height */
#define ITAG_Channels 0x0100006Cu    /* LONG: channels including alpha */
#define ITAG_ImageChannelSize 0x0100006Du /* LONG: bytes per channel, as in the data format */
#define ITAG_ImageChannels 0x0100006Eu    /* LONG: channels without alpha */
#define ITAG_Alpha 0x0100006Fu            /* LONG: 1 when there is an alpha channel */
#define ITAG_Orientation 0x01000070u      /* LONG: orientation */
#define ITAG_ColorSpace 0x01000071u       /* LONG: colour space number */
#define ITAG_XAspect 0x01000072u          /* LONG: horizontal part of the pixel aspect */
#define ITAG_YAspect 0x01000073u          /* LONG: vertical part of the pixel aspect */
#define ITAG_XDPI 0x01000074u             /* LONG: horizontal resolution in dots per inch */
#define ITAG_YDPI 0x01000075u             /* LONG: vertical resolution in dots per inch */
#define ITAG_PageNumber 0x01000076u       /* LONG: page number; the library does not act on it */
#define ITAG_MeterTicks 0x01000077u       /* LONG: used with the progress callback */
#define ITAG_MeterCallbackUserData 0x01000078u /* LONG: user data for the progress callback */
#define ITAG_AbortCallbackUserData 0x01000079u /* LONG: user data for the abort callback */
#define MTAG_Alpha 0x01000080u                 /* LONG: capability */
#define MTAG_Device 0x01000081u                /* LONG: capability */
#define MTAG_Animation 0x01000082u             /* LONG: capability */
#define MTAG_Version 0x01000084u     /* LONG: module's protocol version in every acknowledgement */
#define MTAG_AlphaAlways 0x01000089u /* LONG: capability */
#define MTAG_Quiet 0x0100008Cu       /* LONG: no message box when a module has no settings dialog */
#define XTAG_Void 0x010001F4u        /* LONG: placeholder; the library does not act on it */
#define ITAG_Filename 0x02000000u    /* STRING: the image file's name */
#define MTAG_ModuleName 0x02000001u  /* STRING: the module's name */
#define MTAG_ModuleDirectory 0x02000002u /* STRING: loaders or savers directory */
#define ITAG_Artist 0x02000003u          /* STRING: text field */
#define ITAG_DateTime 0x02000004u        /* STRING: text field */
#define ITAG_HostComputer 0x02000005u    /* STRING: text field */
#define ITAG_Description 0x02000006u     /* STRING: text field */
#define ITAG_Make 0x02000007u            /* STRING: text field */
#define ITAG_Model 0x02000008u           /* STRING: text field */
#define ITAG_Software 0x02000009u        /* STRING: text field */
#define ITAG_DocumentName 0x0200000Au    /* STRING: text field */
#define ITAG_PageName 0x0200000Bu        /* STRING: text field */
#define MTAG_CapString 0x0200000Eu       /* STRING: whole capability text */
#define MTAG_Extension 0x0200000Fu       /* STRING: capability */
#define MTAG_LongModuleName 0x02000010u  /* STRING: capability */
#define ITAG_ScalerName \
    0x02000012u /* STRING: name of the scaler that the host asks for when it reads scaled */
#define ITAG_Data 0x03000000u           /* DATA: pixel lines of a data block */
#define ITAG_DataFormat 0x03000001u     /* DATA: 128-byte data format record */
#define MTAG_ErrorCode 0x03000002u      /* DATA: error code and subcode, two 32-bit words */
#define ITAG_Palette 0x03000004u        /* DATA: palette */
#define MTAG_ModuleList 0x04000000u     /* STRING LIST: module names */
#define MTAG_ListUNUSED1 0x04000001u    /* STRING LIST: reserved */
#define MTAG_ListUNUSED2 0x04000002u    /* STRING LIST: reserved */
#define MTAG_ListUNUSED3 0x04000003u    /* STRING LIST: reserved */
#define MTAG_ColorSpaces 0x04000004u    /* STRING LIST: capability */
#define MTAG_Sizes 0x04000005u          /* STRING LIST: capability */
#define MTAG_BitsPerChannel 0x04000006u /* STRING LIST: capability */
#define ITAG_MeterCallback 0x05000000u  /* FUNCPTR: progress callback */
#define ITAG_AbortCallback 0x05000001u  /* FUNCPTR: abort callback */
#define MTAG_ParentWindow 0x05000004u   /* FUNCPTR: window that owns a module's settings dialog */
#define ITAG_Aspect                                                                        \
    0x06000001u /* DOUBLE: pixel aspect as one number, kept consistent with ITAG_XAspect / \
                   ITAG_YAspect */

/* Ids that have no name of their own but a meaning. */
#define VORN_ID_OPTION_8 \
    0x01000008u /* LONG: low byte kept in the image handle, never stored as a tag */
#define VORN_ID_OPTION_9 0x01000009u /* LONG: as above */
#define VORN_ID_SWAP_X 0x0100007Bu   /* LONG: exchanged with the next one for a turned image */
#define VORN_ID_SWAP_Y 0x0100007Cu
#define VORN_ID_BITS_PER_CHANNEL \
    0x03000003u /* DATA: the 8 bits-per-channel bytes of the module's data format */

/* Ids beyond the protocol's own numbers. Who doesn't know them passes them by.
 *
 * ITAG_WantedWidth and ITAG_WantedHeight are hints that a host may give when it opens an image
 * (VORN_H_ImageOpen): it will read the picture no larger than this, counted in the picture as it is
 * to be seen (turned upright by its orientation). 0, or none of the two: that direction doesn't
 * matter. A loader whose format allows it (JPEG) then delivers a smaller picture, by 1/2, 1/4 or
 * 1/8, that is still no smaller than wanted in either direction. ITAG_Width and ITAG_Height are
 * always those of the picture that will be delivered, so a host that wants an exact size scales as
 * ever.
 *
 * ITAG_PageNumber, given at opening, chooses the page or frame of a file that holds several,
 * from 1. The loader answers with the page that it opened and, as ITAG_PageCount, how many there
 * are. A page that the file doesn't have can't be opened (2012). */
#define ITAG_PageCount 0x01010000u    /* LONG: pages or frames in the file */
#define ITAG_WantedWidth 0x01010001u  /* LONG: hint at opening */
#define ITAG_WantedHeight 0x01010002u /* LONG: hint at opening */

/* Command numbers: the values of MTAG_Command. Module-specific commands use CMD_Module. */
enum {
    CMD_Terminate = 1,
    CMD_Abort = 2,
    CMD_LoadInfo = 0x1000,
    CMD_LoadData = 0x1001,
    CMD_SaveInfo = 0x2000,
    CMD_SaveOpen = 0x2001,
    CMD_SaveData = 0x2002,
    CMD_Module = 0x3000
};

#endif
